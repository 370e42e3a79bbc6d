#include "showlog/showlogwriter.h"

namespace zun {

namespace {
constexpr int kFlushMillis = 1000;
constexpr qsizetype kFlushBytes = 64 * 1024;
} // namespace

ShowLogWriter::ShowLogWriter(QObject *parent) : QObject(parent)
{
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(kFlushMillis);
    connect(&m_flushTimer, &QTimer::timeout, this, &ShowLogWriter::flush);
}

ShowLogWriter::~ShowLogWriter()
{
    close();
}

bool ShowLogWriter::open(const QString &path, const QString &header, QString *error)
{
    close();
    m_file.setFileName(path);
    // Unbuffered: the buffer here is the only one, so a failed write shows at once.
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        if (error)
            *error = m_file.errorString();
        return false;
    }
    if (m_file.size() == 0)
        append(header);
    return true;
}

void ShowLogWriter::append(const QString &line)
{
    if (!m_file.isOpen())
        return;
    m_buffer += line.toUtf8();
    if (m_buffer.size() >= kFlushBytes)
        flush();
    else if (!m_flushTimer.isActive())
        m_flushTimer.start();
}

bool ShowLogWriter::flush()
{
    m_flushTimer.stop();
    if (!m_file.isOpen() || m_buffer.isEmpty())
        return m_file.isOpen();
    const qint64 written = m_file.write(m_buffer);
    if (written == m_buffer.size()) {
        m_buffer.clear();
        return true;
    }
    const QString message =
        QStringLiteral("The show log could not be written to %1 (%2). Logging has stopped; "
                       "the receivers are still polled.")
            .arg(m_file.fileName(), m_file.errorString());
    m_buffer.clear();
    m_file.close();
    emit failed(message);
    return false;
}

void ShowLogWriter::close()
{
    if (!m_file.isOpen())
        return;
    if (flush())
        m_file.close();
}

} // namespace zun
