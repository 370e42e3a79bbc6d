#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace zun {

enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };

// Every modal question or message the program asks goes through here, so that
// a test can script the answers and read back what the user would have seen.
class Dialogs
{
public:
    virtual ~Dialogs() = default;

    // The box carries the application caption "Zunoria".
    virtual MessageAnswer message(const QString &text, MessageButtons buttons = MessageButtons::Ok) = 0;
    // Empty optional when the user cancelled.
    [[nodiscard]] virtual std::optional<QString> inputBox(const QString &prompt, const QString &title = {},
                                                          const QString &defaultText = {}) = 0;
    // The filter is given in the form "Receiver Setting(*.zun)|*.zun".
    // Empty text when the user cancelled.
    virtual QString openFileName(const QString &filter) = 0;
    // suggestedName, when given, is offered as the file's name.
    virtual QString saveFileName(const QString &filter, const QString &suggestedName = {}) = 0;
    // A small form of option groups with one choice each: every group is its
    // caption followed by its options. The chosen index per group, or empty
    // when the user cancelled.
    [[nodiscard]] virtual std::optional<QList<int>> chooseOptions(const QString &title,
                                                                  const QList<QStringList> &groups) = 0;
};

// Test double: answers come from queues; everything shown is recorded.
class ScriptedDialogs final : public Dialogs
{
public:
    struct Shown
    {
        QString kind; // "message", "input", "open", "save", "choose"
        QString text;
        MessageButtons buttons = MessageButtons::Ok;
    };

    MessageAnswer message(const QString &text, MessageButtons buttons) override;
    [[nodiscard]] std::optional<QString> inputBox(const QString &prompt, const QString &title,
                                                  const QString &defaultText) override;
    QString openFileName(const QString &filter) override;
    QString saveFileName(const QString &filter, const QString &suggestedName) override;
    std::optional<QList<int>> chooseOptions(const QString &title, const QList<QStringList> &groups) override;

    // Yes/No questions take the next queued answer, else No.
    void queueAnswer(MessageAnswer answer) { m_answers.append(answer); }
    // Input boxes take the next queued text; nullopt stands for Cancel.
    void queueInput(std::optional<QString> text) { m_inputs.append(text); }
    void queueFileName(const QString &name) { m_files.append(name); }
    // Option forms take the next queued choices; nullopt (or none queued) is Cancel.
    void queueChoices(std::optional<QList<int>> choices) { m_choices.append(choices); }

    // Runs while each dialog is "open", after it was recorded: the user
    // reading it while the program's timers and sockets go on.
    std::function<void(const Shown &)> whileShown;

    const QList<Shown> &shown() const { return m_shown; }
    QStringList messages() const;
    void clear() { m_shown.clear(); }

private:
    QList<MessageAnswer> m_answers;
    QList<std::optional<QString>> m_inputs;
    QStringList m_files;
    QList<std::optional<QList<int>>> m_choices;
    QList<Shown> m_shown;

    void record(const Shown &shown);
};

} // namespace zun
