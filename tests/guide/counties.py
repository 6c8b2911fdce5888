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
