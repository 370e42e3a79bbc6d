#include "platform/dialogs.h"

namespace zun {

MessageAnswer ScriptedDialogs::message(const QString &text, MessageButtons buttons)
{
    record({QStringLiteral("message"), text, buttons});
    if (buttons == MessageButtons::Ok)
        return MessageAnswer::Ok;
    return m_answers.isEmpty() ? MessageAnswer::No : m_answers.takeFirst();
}

std::optional<QString> ScriptedDialogs::inputBox(const QString &prompt, const QString &, const QString &)
{
    record({QStringLiteral("input"), prompt, MessageButtons::Ok});
    if (m_inputs.isEmpty())
        return std::nullopt;
    return m_inputs.takeFirst();
}

QString ScriptedDialogs::openFileName(const QString &filter)
{
    record({QStringLiteral("open"), filter, MessageButtons::Ok});
    return m_files.isEmpty() ? QString() : m_files.takeFirst();
}

QString ScriptedDialogs::saveFileName(const QString &filter, const QString &suggestedName)
{
    record({QStringLiteral("save"), suggestedName.isEmpty() ? filter : filter + ' ' + suggestedName,
            MessageButtons::Ok});
    return m_files.isEmpty() ? QString() : m_files.takeFirst();
}

std::optional<QList<int>> ScriptedDialogs::chooseOptions(const QString &title, const QList<QStringList> &)
{
    record({QStringLiteral("choose"), title, MessageButtons::Ok});
    if (m_choices.isEmpty())
        return std::nullopt;
    return m_choices.takeFirst();
}

void ScriptedDialogs::record(const Shown &shown)
{
    m_shown.append(shown);
    if (whileShown)
        whileShown(shown);
}

QStringList ScriptedDialogs::messages() const
{
    QStringList texts;
    for (const Shown &s : m_shown)
        if (s.kind == QLatin1String("message"))
            texts << s.text;
    return texts;
}

} // namespace zun
