#pragma once

// Shared by the fuzz targets that read files: the input written to a file of its own, with the
// ANSI code page fixed so that runs are repeatable.
#include "util/AnsiCodePage.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

inline QString FuzzInputFile(const QString& name, const uint8_t* data, size_t size) {
    static QTemporaryDir dir;
    static const bool fixedCodePage = [] {
        util::AnsiCodePage::SetCurrent(1252);
        return true;
    }();
    (void)fixedCodePage;
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();
    file.write(reinterpret_cast<const char*>(data), qint64(size));
    return path;
}
