#include "platform/regularfile.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zun {

namespace {
QString kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("it is a folder, not a file");
    if (S_ISFIFO(mode))
        return QStringLiteral("it is a pipe, not a file");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("it is a device, not a file");
    return QStringLiteral("it is not a regular file");
}
} // namespace

QString openRegularFile(QFile &file, const QString &path)
{
    // Non-blocking, so a FIFO without a writer cannot hold the open; the type
    // is then read from the open handle, so no rename can slip in between.
    const QByteArray native = QFile::encodeName(path);
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    struct stat info
    {
    };
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        const QString reason = kindOf(info.st_mode);
        ::close(fd);
        return reason;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return file.errorString();
    }
    return {};
}

} // namespace zun
