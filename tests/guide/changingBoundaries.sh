# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# [import]
meridor import samples/us_states_history/states_1783_2000.geojson states.vorn \
    --key id --start start_date --end end_date --fields name,area_sqmi --name states
# [look]
meridor series states.vorn area_sqmi Virginia
meridor stats states.vorn area_sqmi --at 1790-08-02 --at 1860-06-01 --at 2000-04-01
# [neighbours]
meridor weights create states.vorn queen --method queen
meridor weights show states.vorn queen --at 1790-08-02 --at 1860-06-01 --at 2000-04-01
meridor neighbors states.vorn queen Virginia --at 1791-06-01
meridor map states.vorn area_sqmi then.png --times 1790-08-02,1860-06-01,2000-04-01 --links queen
meridor subset states.vorn "union of 1900" --existing --at 1900-06-01 | cut -d : -f 1
# [wrong]
meridor import samples/us_states_history/states_1783_2000.geojson static.vorn --key id
meridor neighbors states.vorn queen wa_terr --at 1900-06-01
meridor stats states.vorn area_sqmi
