# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# [import]
meridor import samples/us_income/states48.geojson income.vorn --key fips \
    --table samples/us_income/income_1929_2009.csv --series income=1929..2009
# [look]
meridor stats income.vorn income --at 1929 --at 2009
meridor series income.vorn income Virginia | tail -n 3
meridor classes income.vorn income --method jenks --count 5 --at 2009
meridor map income.vorn income 2009.png --at 2009 --title "Income per head"
# [wrong]
printf 'fips,visits\n51,120\n01,n/a\n99,5\n' > visits.csv
meridor import samples/us_income/states48.geojson visits.vorn --key fips --fields visits --table visits.csv
meridor import samples/us_income/states48.geojson strict.vorn --key fips --table visits.csv --strict
meridor stats income.vorn incom
meridor map income.vorn income 2009.png --at 2009
