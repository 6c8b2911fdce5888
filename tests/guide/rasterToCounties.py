# SPDX-License-Identifier: MIT
# [zones]
import datainterface as di

with di.open("rain.vorn", mode="r+") as project:
    rain, counties = project["pr_1999"]["pr_1999"], project["counties"]
    zones = di.zonal(rain, counties, at=["1999-08", "1999-09"])
    print(zones.groupby("time")["mean"].describe()[["count", "mean", "min", "max"]])
    print(zones.loc[zones["mean"] > 700, ["time", "key", "cells", "mean", "max", "area"]])
    largest = counties.new_dataset("largest rain")
    largest.add(zones[["time", "key", "max"]].rename(columns={"max": "value"}))
    print(largest, largest.statistics("1999-09").maximum)
    project.save()
# [cells]
with di.open("rain.vorn") as project:
    rain = project["pr_1999"]["pr_1999"].to_xarray()
    print(rain.dims, rain.shape)
    print(float(rain.sel(x=-80.8, y=35.2, method="nearest").sel(time="1999-09-01")))
