// SPDX-License-Identifier: MIT
/// The parameters of a method as a form. Choices among things of the project follow it as it changes.
#pragma once
#include <QHash>
#include <QVector>
#include <QWidget>
#include "desk/methods/method.h"

class QFormLayout;

namespace meridor {

class MethodForm : public QWidget {
    Q_OBJECT
public:
    MethodForm(Workspace &workspace, const Method &method, QWidget *parent = nullptr);
    /// Those that are absent keep what the form shows.
    void setParameters(const QVector<MethodParameter> &parameters);
    /// In the order of the method's fields.
    QVector<MethodParameter> parameters() const;

Q_SIGNALS:
    void changed();

private:
    QWidget *makeControl(const MethodField &field);
    /// Fills the choices of the fields that depend on the project, and on other fields.
    void refill();
    void enableFields();
    QVariant valueOf(const MethodField &field) const;
    void show(const MethodField &field, const QVariant &value);
    int geographyOfField(const QString &name) const;
    const MethodField *fieldNamed(const QString &name) const;

    Workspace &mWorkspace;
    const Method &mMethod;
    QHash<QString, QWidget *> mControls;
    bool mIsFilling = false;
};

} // namespace meridor
