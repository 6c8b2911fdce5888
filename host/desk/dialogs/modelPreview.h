// SPDX-License-Identifier: MIT
/// The empirical variogram and the fitted model of a form, before the model is kept.
#pragma once
#include <QTimer>
#include <QWidget>
#include <memory>
#include "core/render/graph.h"

namespace meridor {

class MethodForm;
class Workspace;

/// Drawn anew a moment after the form changes. Datasets of many objects are left to the method
/// itself, which has a progress dialog.
class ModelPreview : public QWidget {
    Q_OBJECT
public:
    ModelPreview(Workspace &workspace, MethodForm &form, QWidget *parent = nullptr);
    QSize sizeHint() const override;
    /// Why there is no graph; empty if there is one.
    const QString &trouble() const { return mTrouble; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void calculate();

    Workspace &mWorkspace;
    MethodForm &mForm;
    QTimer mDelay;
    Graph mGraph;
    QString mTrouble;
};

} // namespace meridor
