# SPDX-License-Identifier: MIT
# [draw]
import datainterface as di

with di.open("wells.vorn") as project:
    level = project["wells"]["level"]
    fitted = di.variogram(level, model="exponential")
    print(di.cross_validate(level, fitted.model).correlation)
    cells = di.make_grid("cells", 50, level, bounds=(0, 0, 3000, 2000))
    kriged = di.krige(level, fitted.model, cells, "predicted")
    print(kriged.times[0].predictions, kriged.times[0].mean_variance)
    drawn = di.simulate(level, cells, "drawn", count=100, seed=1)
    answers = di.summarize_realizations(drawn, deviation=True, above=[41])
    print({name: (values.shape, values.mean().round(6)) for name, values in answers.items()})
# [wrong]
with di.open("wells.vorn") as project:
    level = project["wells"]["level"]
    try:
        di.stored_model(level, "levels")
    except KeyError as error:
        print(error)
    try:
        di.variogram(level, model="spheric")
    except ValueError as error:
        print(error)
