#pragma once
// A data folder of its own for each test, removed afterwards; with a database created by
// the program's own creation code when asked for.
#include "store/startup.h"
#include "support/scriptedprompter.h"

#include <QTemporaryDir>
#include <QtTest>

namespace tarvik::test {

class TempDataFolder {
public:
    TempDataFolder();
    QString path() const; // ends in "/"
    QString filePath(const QString& name) const;
    QString databasePath() const;
    // Starts a session on this folder (creating the database as a first start does).
    std::unique_ptr<Session> start(ScriptedPrompter& prompter) const;
    // A database as a first start leaves it: created and upgraded (all default bark ranges).
    std::unique_ptr<Database> openDatabase() const;

private:
    QTemporaryDir m_dir;
};

// Every test runs with the program's German locale.
void initTestEnvironment();

} // namespace tarvik::test

#define TARVIK_TEST_MAIN(TestClass)                                                                   \
    int main(int argc, char** argv)                                                                  \
    {                                                                                                \
        QApplication app(argc, argv);                                                                \
        tarvik::test::initTestEnvironment();                                                         \
        TestClass tc;                                                                                \
        QTEST_SET_MAIN_SOURCE_PATH                                                                   \
        return QTest::qExec(&tc, argc, argv);                                                        \
    }

#define TARVIK_TEST_CORE_MAIN(TestClass)                                                              \
    int main(int argc, char** argv)                                                                  \
    {                                                                                                \
        QCoreApplication app(argc, argv);                                                            \
        tarvik::test::initTestEnvironment();                                                         \
        TestClass tc;                                                                                \
        QTEST_SET_MAIN_SOURCE_PATH                                                                   \
        return QTest::qExec(&tc, argc, argv);                                                        \
    }
