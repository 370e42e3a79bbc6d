#pragma once

#include <QWidget>

namespace zun {

// The start-up picture, shown while the main screen loads and detects.
class SplashWindow : public QWidget
{
    Q_OBJECT
public:
    explicit SplashWindow(QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;
};

} // namespace zun
