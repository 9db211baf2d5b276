#include "util/Process.h"

#include "util/AnsiCodePage.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace util {

namespace {

constexpr int kChunkBytes = 1024;
// Without a pidfd, how often we look whether the program has ended.
constexpr int kExitPollMs = 100;
// How long a process may take to go once it has been sent SIGKILL.
constexpr int kKillGraceMs = 5000;

// Through the system calls: the C library's declarations of these lack C linkage in some
// versions.
int PidfdOpen(pid_t pid) {
    return int(::syscall(SYS_pidfd_open, pid, 0));
}

int PidfdSignal(int pidfd, int signal) {
    return int(::syscall(SYS_pidfd_send_signal, pidfd, signal, nullptr, 0));
}

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { Reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_fd; }
    bool Valid() const { return m_fd >= 0; }
    void Reset(int fd = -1) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

// A descriptor that took the number of a closed standard one would be overwritten by the child's
// redirections, or passed to it as its input: it moves above them.
bool AboveStandard(Descriptor& fd) {
    if (fd.Get() > STDERR_FILENO)
        return true;
    const int moved = ::fcntl(fd.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0)
        return false;
    fd.Reset(moved);
    return true;
}

// The arguments in the file-name encoding, as posix_spawn wants them.
class ArgumentVector {
public:
    explicit ArgumentVector(const QStringList& command) {
        for (const QString& argument : command)
            m_bytes.push_back(QFile::encodeName(argument));
        for (QByteArray& bytes : m_bytes)
            m_pointers.push_back(bytes.data());
        m_pointers.push_back(nullptr);
    }
    char* const* Data() const { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_bytes;
    std::vector<char*> m_pointers;
};

struct SpawnOptions {
    QString workingFolder;
    int output = -1; // becomes the child's standard output and error; -1 keeps ours
    bool nullInput = false;
};

bool PrepareActions(posix_spawn_file_actions_t& actions, const QByteArray& folder,
                    const SpawnOptions& options) {
    bool ok = true;
    if (options.nullInput || ::fcntl(STDIN_FILENO, F_GETFD) < 0)
        ok =
            posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0) == 0;
    if (ok && options.output >= 0)
        ok = posix_spawn_file_actions_adddup2(&actions, options.output, STDOUT_FILENO) == 0 &&
             posix_spawn_file_actions_adddup2(&actions, options.output, STDERR_FILENO) == 0;
    if (ok && !folder.isEmpty())
        ok = posix_spawn_file_actions_addchdir_np(&actions, folder.constData()) == 0;
    // Descriptors other code opened without O_CLOEXEC would otherwise stay open in the child.
    return ok && posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1) == 0;
}

// A session of its own makes the program the leader of a new process group, which is killed as
// one at a timeout; unlike a mere process group it also leaves the child no controlling terminal,
// so reading a terminal on our standard input does not stop it as a background job. Signal
// dispositions and the mask are reset: ours (an ignored SIGPIPE, a thread's blocked signals)
// would otherwise be inherited.
bool PrepareAttributes(posix_spawnattr_t& attributes) {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    return posix_spawnattr_setsigmask(&attributes, &none) == 0 &&
           posix_spawnattr_setsigdefault(&attributes, &all) == 0 &&
           posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                     POSIX_SPAWN_SETSIGDEF) == 0;
}

// The child's id, or 0 when it could not be started.
pid_t Spawn(const QStringList& command, const SpawnOptions& options) {
    if (command.isEmpty() || command.first().isEmpty())
        return 0;
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0)
        return 0;
    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return 0;
    }
    const QByteArray folder = QFile::encodeName(options.workingFolder);
    const ArgumentVector argv(command);
    pid_t pid = 0;
    if (!PrepareActions(actions, folder, options) || !PrepareAttributes(attributes) ||
        posix_spawnp(&pid, argv.Data()[0], &actions, &attributes, argv.Data(), environ) != 0)
        pid = 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// Waits for a process we did not start, or cannot wait for with waitpid, to end.
bool WaitForEnd(int pidfd, int timeoutMs) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    pollfd entry{pidfd, POLLIN, 0};
    for (;;) {
        int wait = -1;
        if (timeoutMs >= 0)
            wait = int(std::max<qint64>(
                0, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now())
                       .count()));
        const int ready = ::poll(&entry, 1, wait);
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

void Reap(pid_t pid, int* status) {
    while (::waitpid(pid, status, 0) < 0 && errno == EINTR) {
    }
}

// The child's output as it arrives, read in chunks of at most kChunkBytes.
class OutputCollector {
public:
    // Reads what the pipe holds now; false once the pipe is at its end or broken.
    bool Drain(int fd) {
        char buffer[kChunkBytes];
        for (;;) {
            const ssize_t got = ::read(fd, buffer, sizeof buffer);
            if (got > 0) {
                if (m_firstChunk < 0)
                    m_firstChunk = got;
                m_bytes.append(buffer, got);
            } else if (got < 0 && errno == EINTR) {
                continue;
            } else {
                return got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
            }
        }
    }
    QString Text() const;

private:
    QByteArray m_bytes;
    qsizetype m_firstChunk = -1;
};

bool HasUtf16Mark(const QByteArray& bytes) {
    return bytes.size() >= 2 && uchar(bytes[0]) == 0xFF && uchar(bytes[1]) == 0xFE;
}

// UTF-16LE text of mostly Latin letters has a zero in every other byte, and ANSI text has no
// zeros at all; text in other scripts is recognised by its mark only.
bool LooksLikeUtf16(const QByteArray& head) {
    if (HasUtf16Mark(head))
        return true;
    const qsizetype pairs = head.size() / 2;
    if (pairs == 0)
        return false;
    qsizetype zeroHigh = 0;
    qsizetype zeroLow = 0;
    for (qsizetype i = 0; i < pairs; ++i) {
        zeroLow += head[2 * i] == '\0';
        zeroHigh += head[2 * i + 1] == '\0';
    }
    return zeroHigh * 2 >= pairs && zeroLow * 8 <= zeroHigh;
}

QString OutputCollector::Text() const {
    if (m_firstChunk > 0 && LooksLikeUtf16(m_bytes.left(m_firstChunk))) {
        const qsizetype start = HasUtf16Mark(m_bytes) ? 2 : 0;
        const qsizetype units = (m_bytes.size() - start) / 2;
        QString text(units, Qt::Uninitialized);
        for (qsizetype i = 0; i < units; ++i)
            text[i] = QChar(
                char16_t(uchar(m_bytes[start + 2 * i]) | uchar(m_bytes[start + 2 * i + 1]) << 8));
        // An odd last byte counts as a character with a zero high byte, as in text files.
        if ((m_bytes.size() - start) % 2 != 0)
            text.append(QChar(char16_t(uchar(m_bytes.back()))));
        return text;
    }
    QString text;
    // An unusable code page still yields the text rather than nothing.
    if (!AnsiCodePage::ToUnicode(m_bytes, AnsiCodePage::kSystem, text))
        text = QString::fromLatin1(m_bytes);
    return text;
}

int ExitCode(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : kCrashed;
}

// Reads the child's output until it ends or the time is up, then reaps it.
int Collect(pid_t pid, int readEnd, int timeoutMs, QString& output) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    // Readable once the child has ended, so that its end wakes the wait at once.
    const Descriptor pidfd(PidfdOpen(pid));
    OutputCollector collected;
    bool pipeOpen = true;
    int result = kCrashed;
    for (;;) {
        pollfd entries[2];
        nfds_t count = 0;
        if (pipeOpen)
            entries[count++] = pollfd{readEnd, POLLIN, 0};
        if (pidfd.Valid())
            entries[count++] = pollfd{pidfd.Get(), POLLIN, 0};
        qint64 wait = pidfd.Valid() ? -1 : kExitPollMs;
        if (timeoutMs >= 0) {
            const qint64 left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now())
                    .count();
            wait = wait < 0 ? std::max<qint64>(0, left) : std::clamp<qint64>(left, 0, wait);
        }
        ::poll(count ? entries : nullptr, count, int(std::min<qint64>(wait, INT_MAX)));
        if (pipeOpen)
            pipeOpen = collected.Drain(readEnd);
        int status = 0;
        const pid_t ended = ::waitpid(pid, &status, WNOHANG);
        if (ended == pid) {
            // What the child wrote just before it ended.
            if (pipeOpen)
                collected.Drain(readEnd);
            result = ExitCode(status);
            break;
        }
        if (ended < 0 && errno != EINTR)
            break; // its status cannot be read
        if (timeoutMs >= 0 && Clock::now() >= deadline) {
            // The group holds whatever the program started and left running.
            if (::kill(-pid, SIGKILL) != 0)
                ::kill(pid, SIGKILL);
            Reap(pid, &status);
            if (pipeOpen)
                collected.Drain(readEnd);
            result = kTimedOut;
            break;
        }
    }
    output = collected.Text();
    return result;
}

} // namespace

int RunProgram(const QStringList& command, const QString& workingFolder, QString& output,
               int timeoutMs) {
    output.clear();
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return kPipeFailed;
    Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    if (!AboveStandard(writeEnd))
        return kChildEndFailed;
    if (!AboveStandard(readEnd) || ::fcntl(readEnd.Get(), F_SETFL, O_NONBLOCK) != 0)
        return kOwnEndFailed;
    const pid_t pid = Spawn(command, SpawnOptions{workingFolder, writeEnd.Get(), false});
    // Ours must go, or the pipe never reports its end.
    writeEnd.Reset();
    if (pid <= 0)
        return kStartFailed;
    return Collect(pid, readEnd.Get(), timeoutMs, output);
}

int RunProgram(const QString& commandLine, const QString& workingFolder, QString& output,
               int timeoutMs) {
    return RunProgram(QProcess::splitCommand(commandLine), workingFolder, output, timeoutMs);
}

bool ShowInFileManager(const QString& path, const QString& launcher) {
    const QString folder = QFileInfo(path).absolutePath();
    if (path.isEmpty() || !QFileInfo(folder).isDir())
        return false;
    const pid_t pid = Spawn({launcher, folder}, SpawnOptions{folder, -1, true});
    if (pid <= 0)
        return false;
    // The launcher may stay as long as the file manager does; it is reaped whenever it ends.
    try {
        std::thread([pid] { Reap(pid, nullptr); }).detach();
    } catch (const std::system_error&) {
        ::waitpid(pid, nullptr, WNOHANG);
    }
    return true;
}

bool CloseProcess(qint64 pid, bool force, int timeoutMs) {
    // 0 and negative numbers would signal whole process groups.
    if (pid <= 0 || pid > INT_MAX)
        return false;
    // Signalled through a pidfd, a process that ends meanwhile cannot be mistaken for a new one
    // given the same number.
    const Descriptor process(PidfdOpen(pid_t(pid)));
    if (!process.Valid() || PidfdSignal(process.Get(), SIGTERM) != 0)
        return false;
    if (WaitForEnd(process.Get(), timeoutMs))
        return true;
    if (!force)
        return false;
    if (PidfdSignal(process.Get(), SIGKILL) != 0)
        return errno == ESRCH;
    return WaitForEnd(process.Get(), kKillGraceMs);
}

bool WaitForObject(const std::function<bool()>& signalled, int timeoutSeconds) {
    if (signalled())
        return true;
    const qint64 limitMs = timeoutSeconds < 0 ? -1 : qint64(timeoutSeconds) * 1000;
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QTimer tick;
    tick.setInterval(5);
    bool result = false;
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        if (signalled()) {
            result = true;
            loop.quit();
        } else if (limitMs >= 0 && clock.elapsed() > limitMs) {
            loop.quit();
        }
    });
    tick.start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return result;
}

} // namespace util
