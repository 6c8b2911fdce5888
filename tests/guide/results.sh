# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# [projects]
meridor import samples/us_income/states48.geojson income.vorn --key fips \
    --table samples/us_income/income_1929_2009.csv --series income=1929..2009 --quiet > import.txt
meridor import samples/carolina_climate/pr_1999.tif rain.vorn --times date --quiet > import.txt
# [tables]
meridor export income.vorn income.csv --datasets income --from 2008 --to 2009
head -n 3 income.csv
meridor export income.vorn wide.csv --datasets income --from 2008 --layout wide
head -n 2 wide.csv
meridor export income.vorn - --datasets income --at 2009 --columns name,datasets --quiet | sort -t , -k 2 -n -r | head -n 3
# [maps]
meridor export income.vorn income_2009.gpkg --at 2009
meridor export rain.vorn september.tif --at 1999-09
# [cubes]
meridor export rain.vorn rain.nc
meridor export income.vorn income.zarr --datasets income
# [report]
meridor report income.vorn income.html --title "Income per head" | cut -d , -f 1
meridor stats income.vorn income --at 2009 --json | grep mean
# [wrong]
meridor export income.vorn income.xlsx
meridor export income.vorn income.csv
meridor export rain.vorn rain.csv --layout wide
meridor stats nothing.vorn income
