# SPDX-License-Identifier: MIT
# [frames]
import datainterface as di

with di.open("income.vorn") as project:
    income = project["states48"]["income"]
    frame = income.to_frame()
    print(frame[frame["start"] >= 2008].head(3))
    print(frame.pivot(index="key", columns="start", values="value").loc[[53], [2008, 2009]])
    project["states48"].at(2009).to_geopandas().to_file("from_python.gpkg")
    cube = income.to_xarray()
    cube.to_netcdf("from_python.nc")
    print(dict(cube.sizes))
