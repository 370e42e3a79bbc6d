// Draws the picture resources of Zunoria: indicator balls, speaker glyphs,
// the application icon and the splash logo. Everything is vector-drawn so a
// picture can be redrawn at another size by changing one number here.

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTextStream>

#include <cmath>

namespace {

// Balls and speakers are shown at 16-24 logical pixels; 48 keeps them crisp
// on a 2x screen.
constexpr int kGlyphSize = 48;
constexpr int kIconSize = 256;
constexpr QSize kLogoSize(480, 200);

const QColor kTeal(0x00, 0x80, 0x80);
const QColor kTealDark(0x03, 0x4a, 0x4f);
const QColor kSlate(0x33, 0x40, 0x48);

QImage blankImage(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void setupPainter(QPainter &p)
{
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
}

// A glossy indicator lamp: lit from the upper left, dark rim, soft specular spot.
QImage drawBall(QColor light, QColor base, QColor dark)
{
    QImage image = blankImage(QSize(kGlyphSize, kGlyphSize));
    QPainter p(&image);
    setupPainter(p);

    const QRectF ball(3, 3, kGlyphSize - 6, kGlyphSize - 6);
    const QPointF c = ball.center();
    const qreal r = ball.width() / 2;

    // Faint contact shadow so the lamp sits on the panel instead of floating.
    QRadialGradient shadow(c + QPointF(0, 1.5), r + 2.5);
    shadow.setColorAt(0.85, QColor(0, 0, 0, 70));
    shadow.setColorAt(1.0, QColor(0, 0, 0, 0));
    p.setPen(Qt::NoPen);
    p.setBrush(shadow);
    p.drawEllipse(c + QPointF(0, 1.5), r + 2.5, r + 2.5);

    QRadialGradient body(c, r, c - QPointF(r * 0.35, r * 0.4));
    body.setColorAt(0.0, light);
    body.setColorAt(0.55, base);
    body.setColorAt(1.0, dark);
    p.setBrush(body);
    p.setPen(QPen(dark.darker(140), 1.6));
    p.drawEllipse(ball);

    // Specular highlight, an ellipse fading downwards.
    const QRectF spot(c.x() - r * 0.55, c.y() - r * 0.82, r * 1.1, r * 0.75);
    QLinearGradient gloss(spot.topLeft(), spot.bottomLeft());
    gloss.setColorAt(0.0, QColor(255, 255, 255, 210));
    gloss.setColorAt(1.0, QColor(255, 255, 255, 0));
    p.setPen(Qt::NoPen);
    p.setBrush(gloss);
    p.drawEllipse(spot);
    return image;
}

void drawSpeakerBody(QPainter &p, qreal s)
{
    QPainterPath body;
    body.moveTo(6 * s, 18 * s);
    body.lineTo(14 * s, 18 * s);
    body.lineTo(25 * s, 8 * s);
    body.lineTo(25 * s, 40 * s);
    body.lineTo(14 * s, 30 * s);
    body.lineTo(6 * s, 30 * s);
    body.closeSubpath();

    QLinearGradient fill(QPointF(0, 8 * s), QPointF(0, 40 * s));
    fill.setColorAt(0.0, kSlate.lighter(150));
    fill.setColorAt(1.0, kSlate);
    p.setBrush(fill);
    p.setPen(QPen(kSlate.darker(130), 1.4 * s, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(body);
}

QImage drawSpeaker(bool on)
{
    QImage image = blankImage(QSize(kGlyphSize, kGlyphSize));
    QPainter p(&image);
    setupPainter(p);
    const qreal s = kGlyphSize / 48.0;
    drawSpeakerBody(p, s);

    if (on) {
        // Sound waves, fanning out from the cone.
        p.setBrush(Qt::NoBrush);
        const QColor wave(0x1b, 0x8a, 0x3c);
        const QPointF origin(24 * s, 24 * s);
        const qreal radii[] = {7.5, 13.0, 18.5};
        for (qreal radius : radii) {
            p.setPen(QPen(wave, 3.2 * s, Qt::SolidLine, Qt::RoundCap));
            const QRectF arc(origin.x() - radius * s, origin.y() - radius * s, 2 * radius * s,
                             2 * radius * s);
            p.drawArc(arc, -45 * 16, 90 * 16);
        }
    } else {
        // Muted: a red cross where the waves would be.
        const QColor cross(0xd3, 0x2f, 0x2f);
        p.setPen(QPen(cross, 4.2 * s, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(31 * s, 17 * s), QPointF(43 * s, 31 * s));
        p.drawLine(QPointF(43 * s, 17 * s), QPointF(31 * s, 31 * s));
    }
    return image;
}

// Two diversity antennas with ball tips rising from a point pair, and the
// radio waves between them. Drawn into the unit square scaled by size.
void drawAntennaPair(QPainter &p, const QRectF &area, QColor rod, QColor tip, QColor wave)
{
    const qreal w = area.width();
    const qreal h = area.height();
    auto at = [&](qreal x, qreal y) { return QPointF(area.left() + x * w, area.top() + y * h); };

    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(wave, 0.035 * w, Qt::SolidLine, Qt::RoundCap));
    const QPointF centre = at(0.5, 0.42);
    for (qreal radius : {0.10, 0.17, 0.24}) {
        const QRectF arc(centre.x() - radius * w, centre.y() - radius * w, 2 * radius * w, 2 * radius * w);
        p.drawArc(arc, 55 * 16, 70 * 16);
    }

    p.setPen(QPen(rod, 0.045 * w, Qt::SolidLine, Qt::RoundCap));
    const QPointF leftFoot = at(0.27, 0.92);
    const QPointF rightFoot = at(0.73, 0.92);
    const QPointF leftTip = at(0.10, 0.12);
    const QPointF rightTip = at(0.90, 0.12);
    p.drawLine(leftFoot, leftTip);
    p.drawLine(rightFoot, rightTip);

    const qreal tipRadius = 0.055 * w;
    for (QPointF t : {leftTip, rightTip}) {
        QRadialGradient g(t, tipRadius, t - QPointF(tipRadius * 0.4, tipRadius * 0.4));
        g.setColorAt(0.0, tip.lighter(170));
        g.setColorAt(1.0, tip);
        p.setPen(Qt::NoPen);
        p.setBrush(g);
        p.drawEllipse(t, tipRadius, tipRadius);
    }
}

// The front of a one-unit receiver: a dark window with three level bars.
void drawReceiverUnit(QPainter &p, const QRectF &unit)
{
    QLinearGradient metal(unit.topLeft(), unit.bottomLeft());
    metal.setColorAt(0.0, QColor(0xf4, 0xf6, 0xf7));
    metal.setColorAt(1.0, QColor(0xb8, 0xc2, 0xc6));
    p.setPen(QPen(QColor(0x25, 0x30, 0x36), unit.height() * 0.05));
    p.setBrush(metal);
    p.drawRoundedRect(unit, unit.height() * 0.16, unit.height() * 0.16);

    const QRectF window(unit.left() + unit.width() * 0.08, unit.top() + unit.height() * 0.2,
                        unit.width() * 0.48, unit.height() * 0.6);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x16, 0x22, 0x28));
    p.drawRoundedRect(window, window.height() * 0.12, window.height() * 0.12);

    const qreal levels[] = {0.8, 0.65, 0.45};
    const QColor colours[] = {QColor(0x40, 0x6c, 0xff), QColor(0x90, 0xa8, 0xff), QColor(0x2e, 0xc8, 0x4a)};
    const qreal barWidth = window.width() * 0.2;
    for (int i = 0; i < 3; ++i) {
        const qreal left = window.left() + window.width() * 0.1 + i * window.width() * 0.29;
        const qreal full = window.height() * 0.76;
        const qreal bottom = window.bottom() - window.height() * 0.12;
        p.setBrush(colours[i]);
        p.drawRect(QRectF(left, bottom - full * levels[i], barWidth, full * levels[i]));
    }

    // Two status lamps on the right of the front panel.
    const qreal lampRadius = unit.height() * 0.12;
    const QPointF lamp1(unit.left() + unit.width() * 0.70, unit.center().y());
    const QPointF lamp2(unit.left() + unit.width() * 0.85, unit.center().y());
    p.setBrush(QColor(0x2e, 0xc8, 0x4a));
    p.drawEllipse(lamp1, lampRadius, lampRadius);
    p.setBrush(QColor(0xff, 0xb0, 0x20));
    p.drawEllipse(lamp2, lampRadius, lampRadius);
}

QImage drawIcon()
{
    QImage image = blankImage(QSize(kIconSize, kIconSize));
    QPainter p(&image);
    setupPainter(p);
    const qreal s = kIconSize;

    const QRectF tile(s * 0.04, s * 0.04, s * 0.92, s * 0.92);
    QLinearGradient bg(tile.topLeft(), tile.bottomLeft());
    bg.setColorAt(0.0, kTeal.lighter(125));
    bg.setColorAt(1.0, kTealDark);
    p.setPen(QPen(kTealDark.darker(150), s * 0.012));
    p.setBrush(bg);
    p.drawRoundedRect(tile, s * 0.18, s * 0.18);

    drawAntennaPair(p, QRectF(s * 0.14, s * 0.10, s * 0.72, s * 0.58), QColor(0xe8, 0xee, 0xf0),
                    QColor(0xff, 0x5a, 0x4a), QColor(0xff, 0xff, 0xff, 200));
    drawReceiverUnit(p, QRectF(s * 0.12, s * 0.64, s * 0.76, s * 0.22));
    return image;
}

QImage drawLogo()
{
    QImage image(kLogoSize, QImage::Format_ARGB32_Premultiplied);
    QPainter p(&image);
    setupPainter(p);
    const QRectF all(QPointF(0, 0), QSizeF(kLogoSize));

    QLinearGradient bg(all.topLeft(), all.bottomRight());
    bg.setColorAt(0.0, QColor(0x0c, 0x1f, 0x27));
    bg.setColorAt(1.0, QColor(0x06, 0x4d, 0x52));
    p.fillRect(all, bg);

    // A faint row of meter bars along the bottom, the program's trade.
    p.setPen(Qt::NoPen);
    const int bars = 48;
    const qreal barStep = all.width() / bars;
    for (int i = 0; i < bars; ++i) {
        const qreal t = i / qreal(bars - 1);
        const qreal level = 0.35 + 0.3 * std::sin(t * 9.0) * std::sin(t * 3.1 + 0.7) + 0.25 * t;
        const qreal height = 38 * std::clamp(level, 0.08, 1.0);
        p.setBrush(QColor(0x4f, 0xd1, 0xc5, 38 + int(40 * t)));
        p.drawRect(QRectF(i * barStep + 1.5, all.bottom() - 8 - height, barStep - 3, height));
    }

    drawAntennaPair(p, QRectF(22, 24, 120, 96), QColor(0xe8, 0xee, 0xf0), QColor(0xff, 0x5a, 0x4a),
                    QColor(0x7f, 0xe0, 0xd6, 190));
    drawReceiverUnit(p, QRectF(24, 118, 116, 32));

    QFont title(QStringLiteral("DejaVu Sans"));
    title.setPixelSize(62);
    title.setBold(true);
    title.setLetterSpacing(QFont::PercentageSpacing, 102);
    p.setFont(title);
    p.setPen(QColor(0xf2, 0xfa, 0xfa));
    p.drawText(QRectF(166, 34, 300, 80), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Zunoria"));

    p.setPen(QPen(QColor(0x4f, 0xd1, 0xc5), 2));
    p.drawLine(QPointF(170, 114), QPointF(452, 114));

    QFont subtitle(QStringLiteral("DejaVu Sans"));
    subtitle.setPixelSize(17);
    subtitle.setLetterSpacing(QFont::AbsoluteSpacing, 1.2);
    p.setFont(subtitle);
    p.setPen(QColor(0xb8, 0xe6, 0xe1));
    p.drawText(QRectF(170, 120, 300, 28), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("Wireless Receiver Monitor"));
    return image;
}

bool save(const QImage &image, const QDir &dir, const QString &name)
{
    const QString path = dir.filePath(name + QStringLiteral(".png"));
    if (!image.save(path, "PNG")) {
        QTextStream(stderr) << "cannot write " << path << '\n';
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    const QDir out(args.size() > 1 ? args.at(1) : QStringLiteral("."));
    if (!out.exists()) {
        QTextStream(stderr) << "usage: zun-imagegen <resources folder>\n";
        return 2;
    }

    bool ok = true;
    ok &= save(drawBall(QColor(0xc8, 0xff, 0xb8), QColor(0x2f, 0xb3, 0x44), QColor(0x0a, 0x55, 0x18)), out,
               QStringLiteral("GreenBall"));
    ok &= save(drawBall(QColor(0xff, 0xfa, 0xc8), QColor(0xf2, 0xcc, 0x12), QColor(0x86, 0x68, 0x00)), out,
               QStringLiteral("YellowBall"));
    ok &= save(drawBall(QColor(0xff, 0xdc, 0xb0), QColor(0xf5, 0x7c, 0x15), QColor(0x85, 0x36, 0x00)), out,
               QStringLiteral("OrangeBall"));
    ok &= save(drawBall(QColor(0xff, 0xc0, 0xb8), QColor(0xdc, 0x24, 0x24), QColor(0x66, 0x08, 0x08)), out,
               QStringLiteral("RedBall"));
    ok &= save(drawSpeaker(true), out, QStringLiteral("SpeakerON"));
    ok &= save(drawSpeaker(false), out, QStringLiteral("SpeakerOFF"));
    ok &= save(drawIcon(), out, QStringLiteral("icon"));
    ok &= save(drawLogo(), out, QStringLiteral("logo"));
    return ok ? 0 : 1;
}
