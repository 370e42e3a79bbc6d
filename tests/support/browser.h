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
