#include "platform/consoledialogs.h"

#include <QCoreApplication>

#include <cstdio>

namespace zun {

namespace {
void printLine(const char *kind, const QString &text)
{
    std::fprintf(stderr, "zunoria: %s: %s\n", kind, qUtf8Printable(text.simplified()));
    std::fflush(stderr);
}
} // namespace

MessageAnswer ConsoleDialogs::message(const QString &text, MessageButtons buttons)
{
    if (buttons == MessageButtons::YesNo) {
        printLine("question", text + QStringLiteral(" (answered No)"));
        return MessageAnswer::No;
    }
    printLine("message", text);
    return MessageAnswer::Ok;
}

std::optional<QString> ConsoleDialogs::inputBox(const QString &prompt, const QString &, const QString &)
{
    printLine("question", prompt + QStringLiteral(" (cancelled)"));
    return std::nullopt;
}

QString ConsoleDialogs::openFileName(const QString &)
{
    return {};
}

QString ConsoleDialogs::saveFileName(const QString &, const QString &)
{
    return {};
}

std::optional<QList<int>> ConsoleDialogs::chooseOptions(const QString &title, const QList<QStringList> &)
{
    printLine("question", title + QStringLiteral(" (cancelled)"));
    return std::nullopt;
}

void ConsoleDesktop::processEvents()
{
    QCoreApplication::processEvents();
}

} // namespace zun
