// SPDX-License-Identifier: MIT
/// What the sources of methods share: the making of fields, and of command lines.
#pragma once
#include <initializer_list>
#include "desk/methods/method.h"
#include "desk/project/workspace.h"

namespace meridor {

/// The translation of a text of a method.
QString methodText(const char *text);

/// The id of a thing of the project. Raises a Failure if none is chosen.
int chosen(const MethodArguments &arguments, const char *name);

/// The names of things in command lines: GEOGRAPHY/DATASET and GEOGRAPHY/SET.
QString datasetWord(int dataset);
QString weightSetWord(int set);
/// Appends --NAME VALUE for each parameter that has a value.
void addOptions(QStringList &line, const MethodArguments &arguments,
                std::initializer_list<const char *> names);

/// @param of  the field with the geography or dataset that it belongs to.
MethodField thing(const char *name, const QString &label, MethodField::Kind kind,
                  const char *of = "");
MethodField maybe(const MethodField &field); ///< may be none
/// A field that has a meaning only with these values of another one.
MethodField onlyWith(const char *other, const QStringList &values, const MethodField &field);
MethodField text(const char *name, const QString &label, const QString &help = QString());
MethodField number(const char *name, const QString &label, double value, double least, double most);
MethodField whole(const char *name, const QString &label, int value, int least, int most);
MethodField flag(const char *name, const QString &label);
/// The first choice is the default.
MethodField choice(const char *name, const QString &label,
                   std::initializer_list<const char *> choices);

} // namespace meridor
