#include "receivers/dropcounter.h"

namespace zun {

void DropCounter::clear()
{
    m_textA = QStringLiteral("0");
    m_textB = QStringLiteral("0");
    m_counting = false;
}

bool DropCounter::count(int rfA, int rfB, int squelchLevel)
{
    if (!m_counting)
        return false;
    const bool changedA = countOne(rfA, squelchLevel, m_aBelow, m_textA);
    const bool changedB = countOne(rfB, squelchLevel, m_bBelow, m_textB);
    return changedA || changedB;
}

bool DropCounter::countOne(int level, int squelchLevel, bool &below, QString &text)
{
    if (level >= squelchLevel) {
        below = false;
        return false;
    }
    const bool drop = !below;
    if (drop) {
        bool ok = false;
        const qlonglong shown = text.trimmed().toLongLong(&ok);
        text = QString::number((ok ? shown : 0) + 1);
    }
    below = true;
    return drop;
}

} // namespace zun
