#include "rftools/rfscale.h"

#include <algorithm>
#include <cmath>

namespace zun {

namespace {
// 99 would open a fourth decade; it is read as the top of the third instead.
int decadeOf(int level)
{
    const int d = static_cast<int>(std::floor(static_cast<float>(level) / 33.0f));
    return std::clamp(d, 0, 2);
}

double powerOfTen(int d)
{
    return d == 0 ? 1.0 : d == 1 ? 10.0 : 100.0;
}
} // namespace

PlotGeometry PlotGeometry::forScale(int scaleWidth, int scaleHeight)
{
    PlotGeometry g;
    g.scaleWidth = scaleWidth;
    g.scaleHeight = scaleHeight;
    g.baseLine = scaleHeight - 1;
    g.plotHeight = scaleHeight - 7;
    g.xOrigin = 0;
    return g;
}

int PlotGeometry::levelY(int level) const
{
    return baseLine - static_cast<int>(std::floor(level / 99.0 * plotHeight));
}

double cursorMicrovolts(int cursorLevel, int rfA)
{
    const int d = decadeOf(cursorLevel);
    double m = (rfA - 33 * d - 1) * 0.27;
    if (m < 0)
        m = 0;
    const double scale = powerOfTen(d);
    return scale + std::nearbyint(m * scale);
}

double recorderMicrovolts(int level)
{
    const int d = decadeOf(level);
    int m = static_cast<int>(std::nearbyint((level - 33 * d - 1) * 0.27));
    if (m < 0)
        m = 0;
    const double scale = powerOfTen(d);
    return std::nearbyint(scale * m) + scale;
}

QString formatMHz(double mhz)
{
    if (!std::isfinite(mhz))
        mhz = 0;
    return QStringLiteral("%1").arg(mhz, 7, 'f', 3, QLatin1Char('0'));
}

QString formatDbm(double dbm)
{
    return QString::number(dbm, 'f', 1) + QStringLiteral("dBm");
}

QString formatMicrovolts(double microvolts)
{
    return QString::number(microvolts, 'f', 0) + QStringLiteral("uV");
}

} // namespace zun
