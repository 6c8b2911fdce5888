# SPDX-License-Identifier: MIT
# [values]
import datainterface as di

with di.open("income.vorn") as project:
    states = project["states48"]
    income = states["income"]
    print(income.describe().loc[[1929, 2009]])
    print(income.series(states.find("Virginia")).tail(3))
    print(income.classes(5, "jenks", at=2009))
    frame = states.at(2009).to_geopandas()
    print(len(frame), frame.crs.name, frame["income"].max())
# [frame]
import geopandas

with di.new() as project:
    frame = geopandas.read_file("samples/nc_sids/nc_counties.geojson")
    frame["rate"] = 1000 * frame["SID74"] / frame["BIR74"]
    counties = di.from_geopandas(frame[["fips", "name", "rate", "geometry"]], key="fips", name="counties")
    print(counties)
    print(counties["rate"].statistics())
    project.save("counties.vorn")
# [keys]
with di.open("income.vorn") as project:
    try:
        project["states48"]["incom"]
    except KeyError as error:
        print(error)
    try:
        di.open("income.vorn")
    except ValueError as error:
        print(error)
