#pragma once

#include <QByteArray>
#include <QString>

// What the package reader and writer share.
namespace questionnaire::package {

// libzip takes UTF-8 names on Windows and the local encoding elsewhere.
QByteArray ZipPath(const QString& path);
QString ZipErrorText(int code);
// The start of the name of the folder a package is unpacked into, inside the working folder,
// before its contents replace the working folder's.
inline constexpr char kUnpackingPrefix[] = ".unpacking-";

} // namespace questionnaire::package
