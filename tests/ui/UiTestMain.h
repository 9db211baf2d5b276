#pragma once

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

// A Qt Test table of one column, "row", holding the index of each row of `rows` under its name.
template <class Row, size_t N> void AddRows(const Row (&rows)[N]) {
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < N; ++i)
        QTest::newRow(rows[i].name) << int(i);
}

// The main() of a window test: profile and data folders in a temporary folder so no test touches
// the real ones, a QApplication, then the Qt Test class.
#define TRANSLATOR_UI_TEST_MAIN(TestClass)                                                         \
    int main(int argc, char** argv) {                                                              \
        QTemporaryDir home;                                                                        \
        const QByteArray base = home.path().toLocal8Bit();                                         \
        qputenv("XDG_CONFIG_HOME", base + "/config");                                              \
        qputenv("XDG_DATA_HOME", base + "/data");                                                  \
        qputenv("XDG_CACHE_HOME", base + "/cache");                                                \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))                                        \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                               \
        QApplication app(argc, argv);                                                              \
        QApplication::setOrganizationName(QStringLiteral("Halvard Quist"));                        \
        QApplication::setApplicationName(QStringLiteral("Translator"));                            \
        TestClass test;                                                                            \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
