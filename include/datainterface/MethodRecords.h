// SPDX-License-Identifier: MIT
/// Records that the library passes to the host. The library makes them with default values and
/// never reads their fields; the host gives them their meaning.
#pragma once
#include <QPointF>
#include <QString>
#include <QVariant>
#include <QVector>

/// The kind of graph that a VORN_Display... function requests.
enum GraphTypes { GT_ScatterPlot = 0, GT_BoxPlot = 1, GT_Histogram = 2, GT_TimePlot = 4 };

/// One argument of a method of the host.
struct MethodParameter {
    QString name;
    QVariant value;
};

/// What a method of the host reports when it is done.
struct MethodReport {
    QString text;
    QVector<MethodParameter> results;
};

/// How the host colours values: a scheme, class limits and the texts of its legend.
struct ColorSchemeInfo {
    /// One text of a legend.
    struct Label {
        QString text;
    };
    /// Texts of a legend under one heading.
    struct LabelGroup {
        QString text;
        QVector<Label> labels;
    };

    qint32 scheme = 0;
    QVector<quint32> colors;
    quint32 missingColor = 0;
    qint32 firstShade = 0;
    qint32 shadeCount = 64;
    qint32 classCount = 1;
    qint32 classification = 1;
    QVector<quint32> classColors;
    QVector<double> classLimits;
    QVector<Label> labels;
    QVector<LabelGroup> labelGroups;
};

/// How the host draws points.
struct SymbolSchemeInfo {
    /// The shape and size of one class of points.
    struct Symbol {
        qint32 shape = 0;
        double size = 0.0;
    };
    /// One text of a legend.
    struct Label {
        QString text;
    };

    qint32 scheme = 0;
    QVector<Symbol> symbols;
    QVector<Label> labels;
};
