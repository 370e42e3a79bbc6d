#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace zun {

class ClickLabel;
class ProgressBox;

// Progress of the receiver search. The search calls setProgress() for every
// address it probes and asks skipRequested() after each one; "SKIP" stops it.
class SearchProgressWindow : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kAddressCount = 64;

    explicit SearchProgressWindow(QWidget *parent = nullptr);

    void setMessage(const QString &text);
    // Percentage text and bar for the address being probed (1..64); drawn at
    // once, since the search blocks on the line until the next address.
    void setProgress(int address);
    // The user clicked "SKIP": the label has disabled itself.
    [[nodiscard]] bool skipRequested() const;
    // Back to the state of a fresh search; also done on every show.
    void reset();

    QLabel *messageLabel() const { return m_message; }
    QLabel *percentLabel() const { return m_percent; }
    QWidget *progressBox() const;
    ClickLabel *skipLabel() const { return m_skip; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    QLabel *m_message = nullptr;
    QLabel *m_percent = nullptr;
    ProgressBox *m_bar = nullptr;
    ClickLabel *m_skip = nullptr;
};

} // namespace zun
