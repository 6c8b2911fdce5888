# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# [model]
meridor import samples/wells/wells.csv wells.vorn --key well --x x --y y
meridor variogram wells.vorn level --model exponential --save level --plot variogram.png | tail -n 1
meridor krige wells.vorn level --model level --validate 0
# [predict]
meridor krige wells.vorn level --model level --grid field --cell 50 --bounds 0,0,3000,2000 --into predicted
meridor map wells.vorn predicted predicted.png --layer wells
# [draw]
meridor simulate wells.vorn level --to field --realizations 100 --seed 1 --into drawn
meridor realizations wells.vorn drawn --deviation --above 41 --into drawn
meridor map wells.vorn "drawn above 41" above.png --layer wells --palette PuBu
# [wrong]
meridor krige wells.vorn level --model levels --grid other --cell 50 --into other
meridor krige wells.vorn level --model level --grid other --cell 0.01 --into other
meridor simulate wells.vorn level --to wells --realizations 10 --into other
