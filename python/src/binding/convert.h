// SPDX-License-Identifier: MIT
/// Texts and arrays between Qt and Python.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <memory>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace pybind11::detail {

/// A str that is no text, such as one with a lone surrogate, raises UnicodeEncodeError.
template <> struct type_caster<QString> {
    PYBIND11_TYPE_CASTER(QString, const_name("str"));
    bool load(handle source, bool)
    {
        if (!PyUnicode_Check(source.ptr()))
            return false;
        Py_ssize_t size = 0;
        const char *text = PyUnicode_AsUTF8AndSize(source.ptr(), &size);
        if (!text)
            throw error_already_set();
        value = QString::fromUtf8(text, static_cast<int>(size));
        return true;
    }
    static handle cast(const QString &text, return_value_policy, handle)
    {
        const QByteArray bytes = text.toUtf8();
        return PyUnicode_DecodeUTF8(bytes.constData(), bytes.size(), "replace");
    }
};

} // namespace pybind11::detail

namespace meridor::python {

/// An array that owns the vector: nothing is copied unless a QVector is shared.
template <class Vector> py::array arrayOf(Vector values)
{
    using T = std::remove_cv_t<std::remove_reference_t<decltype(*values.data())>>;
    auto owner = std::make_unique<Vector>(std::move(values));
    T *data = owner->data();
    const auto size = static_cast<py::ssize_t>(owner->size());
    py::capsule base(owner.get(), [](void *held) { delete static_cast<Vector *>(held); });
    owner.release();
    return py::array_t<T>(size, data, base);
}

/// The same as a matrix, row by row.
template <class Vector> py::array matrixOf(Vector values, py::ssize_t rows, py::ssize_t columns)
{
    return arrayOf(std::move(values)).reshape({rows, columns});
}

inline py::list listOf(const QStringList &texts)
{
    py::list list(static_cast<size_t>(texts.size()));
    for (int i = 0; i < texts.size(); ++i)
        list[static_cast<size_t>(i)] = py::cast(texts[i]);
    return list;
}

inline QStringList textsOf(const py::iterable &texts)
{
    QStringList list;
    for (const py::handle text : texts)
        list.append(text.cast<QString>());
    return list;
}

} // namespace meridor::python
