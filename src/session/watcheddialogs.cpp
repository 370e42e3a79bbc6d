#include "session/watcheddialogs.h"

namespace zun {

template <class Call> auto WatchedDialogs::watched(Call call)
{
    // A dialog may open another (a message from inside a file dialog's
    // check); only the outermost counts.
    struct Depth
    {
        WatchedDialogs &self;
        explicit Depth(WatchedDialogs &s) : self(s)
        {
            if (self.m_depth++ == 0 && self.m_changed)
                self.m_changed(true);
        }
        ~Depth()
        {
            if (--self.m_depth == 0 && self.m_changed)
                self.m_changed(false);
        }
        Depth(const Depth &) = delete;
        Depth &operator=(const Depth &) = delete;
    } depth(*this);
    return call();
}

MessageAnswer WatchedDialogs::message(const QString &text, MessageButtons buttons)
{
    return watched([&] { return m_inner.message(text, buttons); });
}

std::optional<QString> WatchedDialogs::inputBox(const QString &prompt, const QString &title,
                                                const QString &defaultText)
{
    return watched([&] { return m_inner.inputBox(prompt, title, defaultText); });
}

QString WatchedDialogs::openFileName(const QString &filter)
{
    return watched([&] { return m_inner.openFileName(filter); });
}

QString WatchedDialogs::saveFileName(const QString &filter, const QString &suggestedName)
{
    return watched([&] { return m_inner.saveFileName(filter, suggestedName); });
}

std::optional<QList<int>> WatchedDialogs::chooseOptions(const QString &title,
                                                        const QList<QStringList> &groups)
{
    return watched([&] { return m_inner.chooseOptions(title, groups); });
}

} // namespace zun
