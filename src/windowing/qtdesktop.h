#pragma once

#include "platform/desktop.h"

namespace zun {

// The real desktop session: Qt's event loop, its document opener and screens.
class QtDesktop final : public Desktop
{
public:
    void processEvents() override;
    void openDocument(const QString &path) override;
    int screenWidth() const override;
};

} // namespace zun
