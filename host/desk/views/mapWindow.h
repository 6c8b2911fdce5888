// SPDX-License-Identifier: MIT
/// A map: layers of geographies, their legend, and the form of their classes.
#pragma once
#include "datainterface/MethodRecords.h"
#include "desk/views/viewWindow.h"

class QComboBox;

namespace meridor {

class ClassPanel;
class LegendPanel;
class MapCanvas;
class MapLayerView;

/// A click selects in the uppermost layer that has an object there; regions, keys and classes
/// concern the active layer, which is the current one of the legend.
class MapWindow : public ViewWindow {
    Q_OBJECT
public:
    explicit MapWindow(Workspace &workspace, QWidget *parent = nullptr);
    ~MapWindow() override;

    /// Adds a layer above the others and makes it the active one. Null, after telling the user why,
    /// for an unknown dataset.
    MapLayerView *addLayer(int dataset);
    /// The outlines of a geography, or its points or lines in one colour.
    MapLayerView *addOutlines(int geography);
    void removeLayer(MapLayerView *layer);
    /// @param up  the number of layers to pass.
    void moveLayer(MapLayerView *layer, int up);
    /// From the lowest up.
    const QVector<MapLayerView *> &layers() const { return mLayers; }
    MapLayerView *activeLayer() const;
    void setActiveLayer(MapLayerView *layer);
    MapCanvas &canvas() const { return *mCanvas; }

    QString title() const override;
    /// Empty: the names of what is shown.
    void setOwnTitle(const QString &title);
    View *currentView() const override;
    QString refusal(int dataset) const override;
    void addDataset(int dataset) override { addLayer(dataset); }
    QJsonObject state() const override;
    void restore(const QJsonObject &state) override;
    QStringList commandLine(const QString &picture) const override;
    QString untold() const override;

    /// What the library asks for: see ControllerBase. Colours and limits of the schemes that have a
    /// meaning here are taken over.
    bool addLayer(int dataset, const ColorSchemeInfo &fill, const ColorSchemeInfo &line,
                  const SymbolSchemeInfo &symbols);
    /// Shows the neighbours of an object; of all objects, as lines, if it is -1.
    bool showWeights(int weightSet, int object);

public Q_SLOTS:
    void zoomToAll();
    void zoomToSelection();
    /// Shows or hides the form of the active layer's classes.
    void editClasses(bool edit);

protected:
    void draw(QPainter &painter, const QSize &size) override;
    QSize contentSize() const override;
    void viewLeaves(View *view) override;
    void fitParts() override;

private:
    QString pictureTitle() const;
    void adopt(MapLayerView *layer);
    const MapLayerView *baseLayer() const;
    QStringList marks(const MapLayerView &base) const;
    void layersChanged();
    void activeChanged();
    void showClasses();
    void point(const QPoint &pixel);
    void step(int direction);
    void describeHovered(MapLayerView &layer);
    void selectRegion(const QPainterPath &region, SelectionMode mode);
    void selectClass(MapLayerView *layer, int classIndex, Qt::KeyboardModifiers keys);
    void fillWeights();
    void chooseWeights(int set);
    void readLinks();

    QVector<MapLayerView *> mLayers;
    MapLayerView *mActive = nullptr;
    MapLayerView *mDescribed = nullptr; ///< whose hovered object is told
    QString mOwnTitle;
    MapCanvas *mCanvas;
    LegendPanel *mLegend;
    ClassPanel *mClasses;
    QWidget *mSide;      ///< legend and form; hidden in a narrow window
    QWidget *mClassForm; ///< around it; hidden until it is asked for
    QComboBox *mWeights;
    int mLinkedSet = -1; ///< whose links are drawn
    bool mHasLinksOfAll = false;
};

} // namespace meridor
