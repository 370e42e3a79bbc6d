#pragma once

#include "platform/desktop.h"
#include "platform/dialogs.h"

namespace zun {

// Without a window nobody can answer: every message becomes one line on
// standard error, a question is answered No, and a prompt or file dialog is
// cancelled, so that nothing ever waits for a click.
class ConsoleDialogs final : public Dialogs
{
public:
    MessageAnswer message(const QString &text, MessageButtons buttons) override;
    [[nodiscard]] std::optional<QString> inputBox(const QString &prompt, const QString &title,
                                                  const QString &defaultText) override;
    QString openFileName(const QString &filter) override;
    QString saveFileName(const QString &filter, const QString &suggestedName) override;
    std::optional<QList<int>> chooseOptions(const QString &title, const QList<QStringList> &groups) override;
};

class ConsoleDesktop final : public Desktop
{
public:
    void processEvents() override;
    void openDocument(const QString &) override {}
    int screenWidth() const override { return 1920; }
};

} // namespace zun
