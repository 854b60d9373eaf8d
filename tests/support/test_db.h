#pragma once

#include "common/db/connection.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <gtest/gtest.h>
#include <memory>

namespace orvo::test {

// The engine this test process runs on: ORVO_TEST_ENGINE=sqlite (default) or pg.
db::Engine testEngine();

// A fresh store database with the whole schema, on the engine of this run: a copy of a
// per-process template (a file copy on SQLite, CREATE DATABASE ... TEMPLATE on PostgreSQL).
// Dropped when the object dies.
class TestDatabase {
public:
    TestDatabase();
    ~TestDatabase();
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;

    QSqlDatabase db() const;
    db::Engine engine() const { return m_settings.engine; }
    const db::ConnectionSettings& settings() const { return m_settings; }
    const QString& connectionName() const { return m_name; }
    // A second, independent connection to the same database (another register, a job).
    QSqlDatabase openAnother(const QString& connectionName) const;

private:
    db::ConnectionSettings m_settings;
    QString m_name;
    QStringList m_extraNames;
    QString m_pgName;
};

// Base fixture for tests that need a store database.
class DbTest : public ::testing::Test {
protected:
    void SetUp() override { m_testDb = std::make_unique<TestDatabase>(); }
    void TearDown() override { m_testDb.reset(); }
    QSqlDatabase db() const { return m_testDb->db(); }
    TestDatabase& testDb() const { return *m_testDb; }
    bool isPostgres() const { return m_testDb->engine() == db::Engine::Postgres; }

    // Runs a statement with bound values and fails the test on error.
    void exec(const QString& statement, std::initializer_list<QVariant> values = {}) const;
    QVariant scalar(const QString& statement, std::initializer_list<QVariant> values = {}) const;
    int count(const QString& table, const QString& where = {},
              std::initializer_list<QVariant> values = {}) const;

private:
    std::unique_ptr<TestDatabase> m_testDb;
};

// Settings of the PostgreSQL server used by the tests (ORVO_TEST_PG=host[:port], user
// ORVO_TEST_PG_USER, password ORVO_TEST_PG_PASSWORD; or the throwaway cluster of the run).
db::ConnectionSettings postgresServer(const QString& database);

// A temporary folder that lives for the whole test process (ORVO_HOME of GUI tests and so on).
QString processTempDir();

} // namespace orvo::test
