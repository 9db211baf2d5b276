#pragma once

#include <QString>
#include <QTemporaryDir>

namespace testutil {

// A PostgreSQL server of the test's (or the benchmark's) own: a new cluster in a temporary
// folder, reached through a socket in that folder only (no network port), run as an
// unprivileged user when run as root, and stopped when the object goes.
class PostgresServer {
public:
    PostgresServer() = default;
    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    // False, with the reason in Error(), when the server cannot be set up. Tests run without
    // flushing to disk; a `durable` server flushes as it would in use, for measurements.
    bool Start(bool durable = false);
    // A database of its own on the server, created empty; "" on failure.
    QString CreateDatabase(const QString& name);
    const QString& Error() const { return m_error; }

private:
    bool Run(const QString& program, const QStringList& arguments);
    QString Uri(const QString& database) const;

    QTemporaryDir m_dir;
    QString m_bin;
    QString m_user;
    int m_port = 0;
    bool m_started = false;
    QString m_error;
};

} // namespace testutil
