#pragma once

#include <QByteArray>
#include <QString>

#include <variant>

namespace zun {

// One request read from zunoria/<line>/rx/<aa>/set.
struct ControlRequest
{
    enum class Kind { Mute, Name, BringBack };
    Kind kind = Kind::Mute;
    int address = 0; // 1..64, as the topic spelled it ("03")
    bool mute = false;
    QString name; // already checked against the receiver's alphabet, at most 6 characters
};

// The request a set message carries, or the error its result says. Exactly
// one key per message: a message that asks for two things would leave the
// asker guessing which one failed.
std::variant<ControlRequest, QString> parseControlRequest(const QString &addressLevel,
                                                          const QByteArray &payload);

// The payload of zunoria/<line>/rx/<aa>/result: {"ok":true}, or
// {"ok":false,"error":...} when error is set.
[[nodiscard]] QByteArray controlResultJson(const QString &error = {});

} // namespace zun
