#pragma once

#include "support/netsupport.h"

#include <QTemporaryDir>
#include <QWebSocket>

#include <optional>

namespace zun {

// Headless Chromium driven over its DevTools WebSocket.
class Browser
{
public:
    Browser() = default;
    Browser(const Browser &) = delete;
    Browser &operator=(const Browser &) = delete;
    // Chromium's helpers write into the profile after their parent is gone,
    // so the whole process group goes before the profile folder does.
    ~Browser();

    bool open(const QString &url);

    // The value of a JavaScript expression, as text.
    QString evaluate(const QString &expression);

private:
    QTemporaryDir m_profile;
    Child m_chromium;
    QWebSocket m_devtools;
    int m_id = 0;
    std::optional<QString> m_result;
};

} // namespace zun
