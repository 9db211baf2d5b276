#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
    // Settings and data locations are resolved from these variables, so they must be set
    // before anything asks for them.
    QTemporaryDir home;
    const QByteArray base = home.path().toLocal8Bit();
    qputenv("XDG_CONFIG_HOME", base + "/config");
    qputenv("XDG_DATA_HOME", base + "/data");
    qputenv("XDG_CACHE_HOME", base + "/cache");
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Halvard Quist"));
    QCoreApplication::setApplicationName(QStringLiteral("Translator"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
