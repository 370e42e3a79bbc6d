#pragma once

#include "platform/dialogs.h"

#include <functional>

namespace zun {

// The platform's dialogs, told apart from the rest of the program by one
// fact: while any of them is open the work loop stands still, so nothing on
// the line is read. The session hears when the first opens and the last closes.
class WatchedDialogs final : public Dialogs
{
public:
    explicit WatchedDialogs(Dialogs &inner) : m_inner(inner) {}

    void setOpenChanged(std::function<void(bool open)> changed) { m_changed = std::move(changed); }
    [[nodiscard]] bool open() const { return m_depth > 0; }

    MessageAnswer message(const QString &text, MessageButtons buttons) override;
    [[nodiscard]] std::optional<QString> inputBox(const QString &prompt, const QString &title,
                                                  const QString &defaultText) override;
    QString openFileName(const QString &filter) override;
    QString saveFileName(const QString &filter, const QString &suggestedName) override;
    std::optional<QList<int>> chooseOptions(const QString &title, const QList<QStringList> &groups) override;

private:
    template <class Call> auto watched(Call call);

    Dialogs &m_inner;
    std::function<void(bool)> m_changed;
    int m_depth = 0;
};

} // namespace zun
