#include "common/PostgresServer.h"

#include "util/SqlConnection.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <unistd.h>

namespace testutil {

namespace {

// The newest server installed the way Debian installs them.
QString ServerBinaries() {
    const QStringList versions =
        QDir(QStringLiteral("/usr/lib/postgresql")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    int best = -1;
    for (const QString& version : versions)
        best = std::max(best, version.toInt());
    return best < 0 ? QString() : QStringLiteral("/usr/lib/postgresql/%1/bin/").arg(best);
}

} // namespace

PostgresServer::~PostgresServer() {
    if (m_started)
        Run(m_bin + QStringLiteral("pg_ctl"),
            {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-m"),
             QStringLiteral("immediate"), QStringLiteral("-w"), QStringLiteral("stop")});
}

bool PostgresServer::Run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    // The server refuses to run as root: it then runs as the unprivileged user.
    if (::geteuid() == 0)
        process.start(QStringLiteral("setpriv"),
                      QStringList{QStringLiteral("--reuid=") + m_user,
                                  QStringLiteral("--regid=") + m_user,
                                  QStringLiteral("--init-groups"), program} +
                          arguments);
    else
        process.start(program, arguments);
    if (process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
        process.exitCode() == 0)
        return true;
    m_error = QStringLiteral("%1 failed: %2")
                  .arg(program, QString::fromLocal8Bit(process.readAll()).trimmed());
    return false;
}

bool PostgresServer::Start(bool durable) {
    m_bin = ServerBinaries();
    if (m_bin.isEmpty()) {
        m_error = QStringLiteral("no PostgreSQL server is installed (Debian package postgresql)");
        return false;
    }
    if (!m_dir.isValid()) {
        m_error = QStringLiteral("no temporary folder");
        return false;
    }
    m_user =
        ::geteuid() == 0 ? QStringLiteral("postgres") : QString::fromLocal8Bit(qgetenv("USER"));
    if (::geteuid() == 0) {
        // The folder becomes the unprivileged user's.
        QProcess::execute(QStringLiteral("chown"),
                          {QStringLiteral("-R"), m_user + QLatin1Char(':') + m_user, m_dir.path()});
        QFile::setPermissions(m_dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                QFileDevice::ExeOwner | QFileDevice::ReadOther |
                                                QFileDevice::ExeOther);
    }
    // Each test program has its own socket name, so that two can run at once.
    m_port = 20000 + int(QCoreApplication::applicationPid() % 30000);
    const QString data = m_dir.filePath(QStringLiteral("data"));
    if (!Run(m_bin + QStringLiteral("initdb"),
             {QStringLiteral("-D"), data, QStringLiteral("--auth=trust"),
              QStringLiteral("--encoding=UTF8"), QStringLiteral("--no-sync"), QStringLiteral("-U"),
              m_user}))
        return false;
    const QString options = QStringLiteral("-c listen_addresses='' -k %1 -p %2%3")
                                .arg(m_dir.path())
                                .arg(m_port)
                                .arg(durable ? QString() : QStringLiteral(" -c fsync=off"));
    m_started = Run(m_bin + QStringLiteral("pg_ctl"),
                    {QStringLiteral("-D"), data, QStringLiteral("-l"),
                     m_dir.filePath(QStringLiteral("server.log")), QStringLiteral("-o"), options,
                     QStringLiteral("-w"), QStringLiteral("start")});
    return m_started;
}

QString PostgresServer::Uri(const QString& database) const {
    return QStringLiteral("postgresql://%1@/%2?host=%3&port=%4")
        .arg(m_user, database, m_dir.path())
        .arg(m_port);
}

QString PostgresServer::CreateDatabase(const QString& name) {
    util::sql::Connection admin;
    if (const util::Outcome opened = admin.Open(Uri(QStringLiteral("postgres"))); !opened) {
        m_error = opened.Reason();
        return {};
    }
    (void)admin.Exec(QStringLiteral("SET client_min_messages = warning")); // no notice if new
    (void)admin.Exec(QStringLiteral("DROP DATABASE IF EXISTS %1").arg(admin.Quote(name)));
    if (const util::Outcome created =
            admin.Exec(QStringLiteral("CREATE DATABASE %1").arg(admin.Quote(name)));
        !created) {
        m_error = created.Reason();
        return {};
    }
    return Uri(name);
}

} // namespace testutil
