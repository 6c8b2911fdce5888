# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# [weights]
meridor import samples/us_income/states48.geojson income.vorn --key fips \
    --table samples/us_income/income_1929_2009.csv --series income=1929..2009 --quiet > import.txt
meridor weights create income.vorn queen --method queen --weights row
meridor weights show income.vorn queen --at 2009
# [test]
meridor moran income.vorn income queen --at 1929 --at 1981 --at 2009 --seed 1
meridor moran income.vorn income queen --seed 1 --save "income Moran" > moran.txt
meridor plot moran income.vorn income queen moran.png --at 2009 --label abbr
# [local]
meridor moran income.vorn income queen --at 1929 --seed 1 --local --correction holm | grep -e low-low -e high-high
# [file]
meridor weights import income.vorn samples/us_income/states48.gal "from a file" --key fips --standardize
meridor moran income.vorn income "from a file" --at 2009 --seed 1
# [wrong]
meridor moran income.vorn income rook --at 2009
meridor moran income.vorn name queen --at 2009
meridor weights create income.vorn near --method range --range 10 --weights border
