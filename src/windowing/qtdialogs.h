#pragma once

#include "platform/dialogs.h"

namespace zun {

// Real modal dialogs, parented to the active window.
class QtDialogs final : public Dialogs
{
public:
    MessageAnswer message(const QString &text, MessageButtons buttons) override;
    [[nodiscard]] std::optional<QString> inputBox(const QString &prompt, const QString &title,
                                                  const QString &defaultText) override;
    QString openFileName(const QString &filter) override;
    QString saveFileName(const QString &filter, const QString &suggestedName) override;
    std::optional<QList<int>> chooseOptions(const QString &title, const QList<QStringList> &groups) override;
};

} // namespace zun
