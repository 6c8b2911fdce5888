# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# [import]
meridor import samples/carolina_climate/pr_1999.tif rain.vorn --times date
meridor import samples/nc_sids/nc_counties.geojson rain.vorn --append --key fips --fields name --name counties
# [zones]
meridor zonal rain.vorn pr_1999 counties --at 1999-09 | head -n 4
meridor zonal rain.vorn pr_1999 counties --into "mean rain" > zones.txt
meridor stats rain.vorn "mean rain" --at 1999-08 --at 1999-09
meridor select rain.vorn "mean rain" --min 700 --at 1999-09
meridor map rain.vorn "mean rain" rain.png --at 1999-09
# [wrong]
meridor zonal rain.vorn pr_1999 county
meridor zonal rain.vorn pr_1999 counties --into "mean rain"
meridor map rain.vorn pr_1999 rain.svg --at 2001-01
meridor import samples/us_income/states48.geojson rain.vorn --append --key fips --fields name --quiet > import.txt
meridor zonal rain.vorn pr_1999 states48
