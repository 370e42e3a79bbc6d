#pragma once

#include <QByteArray>
#include <QFile>
#include <QObject>
#include <QTimer>

namespace zun {

// Appends text to a file without ever holding up the caller for more than a
// memory copy: lines collect in a buffer that goes to disk at least once a
// second, when it grows large, and on close. The first failed write (a full
// disk) closes the file, drops what was buffered and reports once.
class ShowLogWriter : public QObject
{
    Q_OBJECT
public:
    explicit ShowLogWriter(QObject *parent = nullptr);
    ~ShowLogWriter() override;

    // Appends to the file; header goes first into a file that is empty.
    // False with *error set when the file cannot be opened.
    [[nodiscard]] bool open(const QString &path, const QString &header, QString *error);
    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    QString path() const { return m_file.fileName(); }

    void append(const QString &line);
    // Writes out the buffer; false when the write failed (and logging stopped).
    bool flush();
    void close();

signals:
    // Logging stopped because the file could not be written; shown to the user once.
    void failed(const QString &message);

private:
    QFile m_file;
    QByteArray m_buffer;
    QTimer m_flushTimer;
};

} // namespace zun
