// SPDX-License-Identifier: MIT
/// Manual pages and a completion script of bash, made of the definitions of the verbs.
#pragma once
#include <QMap>
#include <QString>

namespace CLI {
class App;
}

namespace meridor {

/// The text of each page by its file name: meridor.1, and meridor-VERB.1 for each verb that works,
/// such as meridor-weights-create.1. @param version  of the program, for the foot of the pages.
QMap<QString, QString> manualPages(const CLI::App &program, const QString &version);

/// A script that completes verbs, options, values of options, files, and the datasets and weight
/// sets of the project that stands before them.
QString bashCompletion(const CLI::App &program);

} // namespace meridor
