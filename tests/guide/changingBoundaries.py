# SPDX-License-Identifier: MIT
# [look]
import datainterface as di

with di.open("states.vorn") as project:
    states = project["states"]
    area = states["area_sqmi"]
    print(area.series("va_state"))
    for time in ("1790-08-02", "1860-06-01", "2000-04-01"):
        frame = states.at(time).to_geopandas(["name", "area_sqmi"])
        queen = states.weights("queen", at=time)
        print(time, len(frame), frame["area_sqmi"].mean().round(1), queen.nnz)
    print(states.at("1791-06-01").keys[:5])
