# SPDX-License-Identifier: MIT
# [test]
import datainterface as di

with di.open("income.vorn") as project:
    states = project["states48"]
    income = states["income"]
    queen = states.weights("queen", at=2009)
    print(repr(queen))
    print(di.moran(income, queen, at=[1929, 1981, 2009], permutations=999, seed=1))
    local = di.local_moran(income, queen, at=1929, permutations=999, seed=1, correction="holm")
    print(local[local["cluster"] != "not significant"])
# [own]
with di.open("income.vorn") as project:
    states = project["states48"]
    queen = states.weights("queen", at=2009)
    lagged = queen @ states["income"].values(2009)
    print(dict(zip(queen.keys[:3], lagged[:3].round(1))))
    try:
        di.moran(states["name"], queen)
    except ValueError as error:
        print(error)
