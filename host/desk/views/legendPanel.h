// SPDX-License-Identifier: MIT
/// The layers of a map from the top down, each with its legend.
#pragma once
#include <QTreeWidget>
#include <QVector>
#include "core/render/legend.h"

namespace meridor {

class MapLayerView;

/// Check boxes show and hide layers; the current item makes its layer the active one. Activating a
/// class (double click, return) selects its objects; Ctrl and the arrows move a layer, Delete
/// removes it.
class LegendPanel : public QTreeWidget {
    Q_OBJECT
public:
    explicit LegendPanel(QWidget *parent = nullptr);

    /// @param layers  from the lowest up.
    void setLayers(const QVector<MapLayerView *> &layers, const MapLayerView *active);
    QSize sizeHint() const override;

Q_SIGNALS:
    void activeChanged(MapLayerView *layer);
    /// The objects of a class are wanted; -1: those without a value.
    void classChosen(MapLayerView *layer, int classIndex, Qt::KeyboardModifiers keys);
    void moveWanted(MapLayerView *layer, int up);
    void removeWanted(MapLayerView *layer);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Shown {
        const MapLayerView *layer;
        LegendBlock block;
        bool isVisible;
        bool isActive;
        /// But for the counts.
        bool looksLike(const Shown &other) const;
    };
    void fill();
    void makeItems();
    void showCounts();
    QIcon iconOf(const LegendEntry &entry) const;
    MapLayerView *layerOf(const QTreeWidgetItem *item) const;

    QVector<MapLayerView *> mLayers;
    QVector<Shown> mShown; ///< from the topmost down
    bool mIsFilling = false;
    int mActive = -1;
};

} // namespace meridor
