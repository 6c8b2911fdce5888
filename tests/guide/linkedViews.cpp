// SPDX-License-Identifier: MIT
// [all]
#include "frame.h"

enum Flag { Shown = 0, Selected = 1, Highlighted = 2 }; // what the host means by its attributes

/// A map, a table or a graph: keeps what it has to draw again until it is updated.
class View : public MLinker {
public:
    View(const char *name, MAttributes *attributes) : MLinker(attributes), mName(name) {}
    bool UpdateView() override
    {
        mDrawn = mStale.size();
        mStale.clear();
        return true;
    }
    void ClearSelection() override { GetAttributes()->SetAllAttribute(Selected, false); }
    void AttributeChanged(const changedAttributes &change) override { mStale += change.ids; }
    /// Prints how many objects the view has drawn again since the last call, and how many wait.
    void tell()
    {
        std::printf("  %s: %d drawn, %d to draw\n", mName, mDrawn, mStale.size());
        mDrawn = 0;
    }

private:
    const char *mName;
    QSet<unsigned> mStale;
    int mDrawn = 0;
};

int main()
{
    Host host;
    const Library library(host);
    const int towns = addTowns({{1, 1}, {5, 2}, {4, 8}, {9, 9}});
    auto *geography = static_cast<MGeoData *>(VORN_GetGeography(towns));
    const int rent = VORN_NewVectorDataset(towns, "rent", TimeSlice, DecimalType, 1, "");
    VORN_AddDataValues(rent, 0, {1900, 2000, true, true}, QVector<double>{5, 4, 7, 9}, {}, true,
                       true);
    VORN_NewDatasetCreated(rent);

    auto *attributes = new MAttributes(4); // flags of four objects; the geography will own them
    for (int i = Shown; i <= Highlighted; ++i)
        attributes->AddAttribute();
    attributes->SetAllAttribute(Shown, true);
    geography->AddAttributes(attributes);

    View map("map", attributes), table("table", attributes), second("second map", attributes);
    for (View *view : {&map, &table, &second})
        geography->AddObjectManager(view);
    // The second map hears of changes, but is not updated with the other two views.
    MLinker::LinkViews(&map, &table);
    const auto show = [&](const char *what) {
        std::printf("%s; selected:", what);
        for (const unsigned object : attributes->GetIdsByState(Selected, true))
            std::printf(" %u", object);
        std::puts("");
        for (View *view : {&map, &table, &second})
            view->tell();
    };

    geography->SelectObjectsByRange(rent, 0, 1950, 6, 10, Selected);
    show("rents from 6 to 10 are selected");
    map.UpdateLinkedViews();
    show("the map updates its group");
    attributes->ToggleAttribute(Selected, 0);
    table.UpdateLinkedViews();
    show("a click in the table");
    map.ClearSelectionState();
    for (View *view : {&map, &second})
        view->UpdateLinkedViews();
    show("the selection is cleared, all views are updated");
}
