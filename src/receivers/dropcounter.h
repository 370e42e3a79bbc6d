#pragma once

#include <QString>

namespace zun {

// Signal drops of both antennas: one drop is one passage from at or above the
// squelch level to below it. The counts exist only as the texts shown.
class DropCounter
{
public:
    void run() { m_counting = true; }
    void pause() { m_counting = false; }
    // Both counts back to "0", counting off. The below flags stay: a level
    // still below the squelch when counting resumes is not a new drop.
    void clear();

    // One reading; returns true when a count changed.
    bool count(int rfA, int rfB, int squelchLevel);

    [[nodiscard]] bool counting() const { return m_counting; }
    [[nodiscard]] bool aBelow() const { return m_aBelow; }
    [[nodiscard]] bool bBelow() const { return m_bBelow; }
    QString textA() const { return m_textA; }
    QString textB() const { return m_textB; }

private:
    [[nodiscard]] static bool countOne(int level, int squelchLevel, bool &below, QString &text);

    bool m_counting = false;
    bool m_aBelow = false;
    bool m_bBelow = false;
    QString m_textA = QStringLiteral("0");
    QString m_textB = QStringLiteral("0");
};

} // namespace zun
