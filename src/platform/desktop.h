#pragma once

#include <QString>

namespace zun {

// The few things the program asks of the desktop session itself.
class Desktop
{
public:
    virtual ~Desktop() = default;
    // DoEvents: run the UI events that are waiting, once, without blocking.
    virtual void processEvents() = 0;
    // Ask the desktop to open a document with its usual viewer.
    virtual void openDocument(const QString &path) = 0;
    // Width of the screen the main window is on, in device-independent pixels.
    virtual int screenWidth() const = 0;
};

// Test double: events still run (widgets need them) but opened documents and
// the screen width are under the test's control.
class FakeDesktop final : public Desktop
{
public:
    void processEvents() override;
    void openDocument(const QString &path) override { m_opened = path; }
    int screenWidth() const override { return m_screenWidth; }

    QString opened() const { return m_opened; }
    void setScreenWidth(int width) { m_screenWidth = width; }

private:
    QString m_opened;
    int m_screenWidth = 1920;
};

} // namespace zun
