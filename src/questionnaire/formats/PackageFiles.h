#pragma once

#include <QByteArray>
#include <QString>

#include <filesystem>

// What the package reader and writer share.
namespace questionnaire::package {

// libzip takes UTF-8 names on Windows and the local encoding elsewhere.
QByteArray ZipPath(const QString& path);
std::filesystem::path FileSystemPath(const QString& path);
QString ZipErrorText(int code);
// A stamp file of a running instance ("stamp12.stp", any letter case), at the top of a working
// folder: never packed, never removed, never overwritten by unpacking.
bool IsStampName(const QString& name);
// The start of the name of the folder a package is unpacked into, inside the working folder,
// before its contents replace the working folder's.
inline constexpr char kUnpackingPrefix[] = ".unpacking-";

} // namespace questionnaire::package
