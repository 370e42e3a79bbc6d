#include "receivers/replies.h"

#include <QTest>

using namespace zun;

namespace {
template <typename T, typename F> QString orNone(const std::optional<T> &value, F text)
{
    return value ? text(*value) : QStringLiteral("none");
}

// Every field a parser gives, "|"-separated, or "none" when the text is no reply.
QString fields(const QString &kind, const QString &reply)
{
    const auto levels = [](const LevelReply &l) {
        return QStringLiteral("%1|%2|%3|%4").arg(l.audio).arg(l.rfA).arg(l.rfB).arg(l.battery);
    };
    if (kind == "M")
        return orNone(parseIdentification(reply, 5), [](const Identification &id) {
            const auto n = [](int value) { return QString::number(value); };
            return QStringList{id.name,         n(id.group),
                               n(id.channel),   id.frequencyCode,
                               n(id.squelch),   n(id.secondLevel),
                               id.groupTable,   id.bandStartCode,
                               n(id.bandWidth), n(id.mute * 2 + id.manualFreq)}
                .join('|');
        });
    if (kind == "N")
        return orNone(parseLevels(reply, 5), levels);
    if (kind == "E")
        return orNone(parseScanPoint(reply, 5), [&](const ScanPointReply &p) { return levels(p.raw); });
    if (kind == "D")
        return orNone(parsePreset(reply, 5), [](const PresetReply &p) { return p.frequencyCode; });
    if (kind == "A")
        return orNone(parseTextA(reply), [](const TextFieldA &t) { return t.text; });
    if (kind == "B")
        return orNone(parseTextB(reply), [](const TextFieldB &t) { return t.text; });
    return orNone(parseAddressCheck(reply, 5),
                  [](const AddressCheck &c) { return QString::number(c.address); });
}
} // namespace

class TestReplies : public QObject
{
    Q_OBJECT
private slots:
    // Replies as receiver 5 sends them, cut short, garbled or from another address.
    void everyReplyGivesItsFieldsOrNothing_data()
    {
        QTest::addColumn<QString>("kind"); // the command the reply answers
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("fields");

        // Name "VOX 1 ", group 3, channel 0 (16), code 1234, squelch 0x14, second level 0x30,
        // a group table, band start 72BA, width 0FA0, flags digit 3 (muted, manual).
        const QString full = QStringLiteral("$05VOX 1 30123414306BCDEF12345672BA0FA03\r");
        const QString fullFields = "VOX 1 |3|16|1234|20|48|6BCDEF123456|72BA|4000|3";
        const auto row = [](const char *tag, const char *kind, const QString &reply, const QString &fields) {
            QTest::newRow(tag) << QString::fromLatin1(kind) << reply << fields;
        };
        row("M full", "M", full, fullFields);
        row("M flags 2 mutes only", "M", full.left(39) + "2", fullFields.chopped(1) + "2");
        row("M flags 1 is manual only", "M", full.left(39) + "1", fullFields.chopped(1) + "1");
        row("M cut after the band width", "M", full.left(39), fullFields.chopped(1) + "0");
        row("M cut inside the name", "M", full.left(6), "VOX|0|16||0|0|||0|0");
        row("M only the head", "M", full.left(3), "|0|16||0|0|||0|0");
        row("M accented and control bytes in the name", "M",
            QStringLiteral("$05\u00C9\u0001AB  ") + full.mid(9),
            QStringLiteral("\u00C9\u0001AB  ") + fullFields.mid(6));
        row("M blanks in the group table", "M", full.left(19) + "6B  EF 23456" + full.mid(31),
            "VOX 1 |3|16|1234|20|48|6B  EF 23456|72BA|4000|3");
        row("M junk where hex belongs reads as 0", "M", full.left(35) + "0FZ0" + full.mid(39),
            "VOX 1 |3|16|1234|20|48|6BCDEF123456|72BA|3840|3");
        row("M another address", "M", "$06" + full.mid(3), "none");
        row("M no dollar", "M", "#05" + full.mid(3), "none");
        row("M a single address digit", "M", "$5", "none");
        row("M empty", "M", "", "none");

        row("N levels", "N", "$05A01E80C1\r", "160|30|128|193");
        row("N lower case", "N", "$05a01e80c1", "160|30|128|193");
        row("N cut after RF A", "N", "$05A01E", "160|30|0|0");
        row("N half a byte", "N", "$05A01", "160|1|0|0");
        row("N from another", "N", "$06A01E80C1", "none");
        row("N noise first", "N", "x$05A01E80C1", "none");
        row("E scan point", "E", "$05000102FF\r", "0|1|2|255");
        row("E garbled", "E", "$0?000102FF", "none");
        row("D preset", "D", "$05129A\r", "129A");
        row("D cut", "D", "$0512", "12");
        row("D from another", "D", "$15129A\r", "none");
        row("A text", "A", "$05ZR8000V1.2\r", "ZR8000");
        row("A garbled is still read", "A", "#15ZR", "ZR");
        row("A empty", "A", "", "none");
        row("B text", "B", "$05120\r", "1.20");
        row("B cut", "B", "$051", "1.");
        row("B empty", "B", "", "none");
        row("L presence", "L", "$05\r", "5");
        row("L any first character", "L", "#05", "5");
        row("L another", "L", "$06\r", "none");
        row("L nothing", "L", "", "none");
    }
    void everyReplyGivesItsFieldsOrNothing()
    {
        QFETCH(QString, kind);
        QFETCH(QString, reply);
        QTEST(fields(kind, reply), "fields");
    }
};

QTEST_GUILESS_MAIN(TestReplies)
#include "tst_replies.moc"
