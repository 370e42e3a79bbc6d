#include "receivers/settingsfile.h"

#include "receivers/receiver.h"

#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>

namespace zun {

namespace {

constexpr int kFieldCount = 10;
constexpr int kMaxLines = 1000;

QString quoted(QString text)
{
    // The format has no escape for a quote inside a string, and a line break
    // would end the line; a receiver may report either in its texts.
    text.replace(QLatin1Char('"'), QLatin1Char('\''));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString flag(bool on)
{
    return on ? QStringLiteral("-1") : QStringLiteral("0");
}

struct Field
{
    QString text;
    bool quoted = false;
};

// Splits one line into its fields; nothing when a quote is left open.
std::optional<QList<Field>> splitFields(const QString &line)
{
    QList<Field> fields;
    int i = 0;
    const int n = line.size();
    for (;;) {
        while (i < n && line.at(i) == QLatin1Char(' '))
            ++i;
        Field field;
        if (i < n && line.at(i) == QLatin1Char('"')) {
            const int close = line.indexOf(QLatin1Char('"'), i + 1);
            if (close < 0)
                return std::nullopt;
            field.text = line.mid(i + 1, close - i - 1);
            field.quoted = true;
            i = close + 1;
            while (i < n && line.at(i) == QLatin1Char(' '))
                ++i;
        } else {
            const int comma = line.indexOf(QLatin1Char(','), i);
            const int end = comma < 0 ? n : comma;
            field.text = line.mid(i, end - i).trimmed();
            i = end;
        }
        fields.append(field);
        if (i >= n)
            break;
        if (line.at(i) != QLatin1Char(','))
            return std::nullopt;
        ++i;
    }
    return fields;
}

std::optional<int> integerIn(const Field &field, int low, int high)
{
    static const QRegularExpression pattern(QStringLiteral("^[+-]?\\d{1,6}$"));
    if (field.quoted || !pattern.match(field.text).hasMatch())
        return std::nullopt;
    const int value = field.text.toInt();
    if (value < low || value > high)
        return std::nullopt;
    return value;
}

bool hasControlCharacter(const QByteArray &raw)
{
    // Latin-1's C1 range counts too: no receiver text holds one.
    return std::any_of(raw.cbegin(), raw.cend(), [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return u < 0x20 || (u >= 0x7F && u < 0xA0);
    });
}

// The characters the detail window lets a user type into a name.
bool isNameText(const QString &name)
{
    return std::all_of(name.cbegin(), name.cend(), [](QChar c) {
        const ushort u = c.unicode();
        return u == ' ' || (u >= 42 && u <= 57) || (u >= 'A' && u <= 'Z');
    });
}

bool isFrequencyCode(const QString &code)
{
    static const QRegularExpression pattern(QStringLiteral("^[0-9A-F]{4}$"));
    return pattern.match(code).hasMatch();
}

QString lineError(int lineNumber, const QString &what)
{
    return QStringLiteral("Line %1 of the settings file %2.").arg(lineNumber).arg(what);
}

} // namespace

QByteArray formatSettings(const QList<Receiver> &records)
{
    QByteArray out;
    for (const Receiver &r : records) {
        const QStringList fields = {QString::number(r.address), quoted(r.name),
                                    QString::number(r.group),   QString::number(r.channel),
                                    quoted(r.channelFreqCode),  quoted(r.manualFreqCode),
                                    QString::number(r.squelch), QString::number(r.secondLevel),
                                    flag(r.manualFreq),         flag(r.mute)};
        out += fields.join(QLatin1Char(',')).toLatin1();
        out += "\r\n";
    }
    return out;
}

SettingsParse parseSettings(const QByteArray &text)
{
    SettingsParse result;
    const QList<QByteArray> rawLines = text.split('\n');
    if (rawLines.size() > kMaxLines + 1) {
        result.error =
            QStringLiteral("The file has more lines than a settings file of 64 receivers can have.");
        return result;
    }
    for (int i = 0; i < rawLines.size(); ++i) {
        const int number = i + 1;
        QByteArray raw = rawLines.at(i);
        if (raw.endsWith('\r'))
            raw.chop(1);
        if (raw.trimmed().isEmpty())
            continue;
        // A line break or escape inside a field would reach the receiver as part
        // of the settings write and could start a command of its own.
        if (hasControlCharacter(raw)) {
            result.error = lineError(number, QStringLiteral("has a control character"));
            return result;
        }
        const auto fields = splitFields(QString::fromLatin1(raw));
        if (!fields) {
            result.error = lineError(number, QStringLiteral("has a quote that is not closed"));
            return result;
        }
        if (fields->size() != kFieldCount) {
            result.error = lineError(
                number, QStringLiteral("has %1 fields instead of %2").arg(fields->size()).arg(kFieldCount));
            return result;
        }
        const QList<Field> &f = *fields;
        SettingsLine line;
        const auto address = integerIn(f[0], 1, 64);
        // Ranges are those a receiver can report, so every saved line loads.
        const auto group = integerIn(f[2], 0, 15);
        const auto channel = integerIn(f[3], 1, 16);
        const auto squelch = integerIn(f[6], 0, 255);
        const auto second = integerIn(f[7], 0, 255);
        const auto manual = integerIn(f[8], -1, 0);
        const auto mute = integerIn(f[9], -1, 0);
        QString bad;
        if (!address)
            bad = QStringLiteral("an address that is not a number from 1 to 64");
        else if (!f[1].quoted)
            bad = QStringLiteral("a name that is not in quotes");
        else if (!isNameText(f[1].text))
            bad = QStringLiteral("a name with characters other than 0-9, A-Z, blank or +-*/,.");
        else if (!group)
            bad = QStringLiteral("a group that is not a number from 0 to 15");
        else if (!channel)
            bad = QStringLiteral("a channel that is not a number from 1 to 16");
        else if (!f[4].quoted || !f[5].quoted)
            bad = QStringLiteral("a frequency that is not in quotes");
        else if (!isFrequencyCode(f[4].text) || !isFrequencyCode(f[5].text))
            bad = QStringLiteral("a frequency code that is not 4 hexadecimal digits 0-9, A-F");
        else if (!squelch)
            bad = QStringLiteral("a squelch that is not a number from 0 to 255");
        else if (!second)
            bad = QStringLiteral("a level setting that is not a number from 0 to 255");
        else if (!manual || !mute)
            bad = QStringLiteral("a flag that is neither 0 nor -1");
        if (!bad.isEmpty()) {
            result.error = lineError(number, QStringLiteral("has ") + bad);
            return result;
        }
        line.address = *address;
        line.name = f[1].text;
        line.group = *group;
        line.channel = *channel;
        line.channelFreqCode = f[4].text;
        line.manualFreqCode = f[5].text;
        line.squelch = *squelch;
        line.secondLevel = *second;
        line.manualFreq = *manual != 0;
        line.mute = *mute != 0;
        result.lines.append(line);
    }
    return result;
}

QString saveSettingsFile(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    if (file.write(content) != content.size()) {
        const QString error = file.errorString();
        file.cancelWriting();
        return error;
    }
    if (!file.commit())
        return file.errorString();
    return {};
}

} // namespace zun
