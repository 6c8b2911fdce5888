// SPDX-License-Identifier: MIT
/// Values by the bytes they write, and the version those are read as.
#pragma once
#include <QByteArray>
#include "Common/detail/streams.h"
#include "datainterface/VersionAPI.h"

/// The version of the files that are loaded in a scope.
class LoadingVersion {
public:
    explicit LoadingVersion(int version) : mOld(dataInterfaceVersionLoading)
    {
        dataInterfaceVersionLoading = version;
    }
    ~LoadingVersion() { dataInterfaceVersionLoading = mOld; }
    Q_DISABLE_COPY(LoadingVersion)

private:
    const int mOld;
};

template <class T> QByteArray streamed(const T &value)
{
    QByteArray bytes;
    datainterface::BytesWriter out(&bytes);
    out << value;
    return bytes;
}

/// Whether `bytes` hold a value and nothing behind it.
template <class T> bool isRead(const QByteArray &bytes, T &value)
{
    datainterface::BytesReader in(bytes);
    in >> value;
    return in.status() == QDataStream::Ok && in.atEnd();
}

/// The shortest cut of `bytes` that is read without complaint; -1 when each one is refused.
template <class T> int readableCut(const QByteArray &bytes)
{
    for (int length = 0; length < bytes.size(); ++length) {
        const QByteArray cut = bytes.left(length);
        datainterface::BytesReader in(cut);
        T value;
        in >> value;
        if (in.status() == QDataStream::Ok)
            return length;
    }
    return -1;
}
