#include "windowing/qtdialogs.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QInputDialog>
#include <QMessageBox>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

namespace zun {

namespace {
const QString kCaption = QStringLiteral("Zunoria");

// "Receiver Setting(*.zun)|*.zun" -> "Receiver Setting (*.zun)"
QString qtFilter(const QString &filter)
{
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList out;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString label = parts.at(i);
        const int paren = label.indexOf(QLatin1Char('('));
        if (paren > 0)
            label = label.left(paren).trimmed();
        out << label + QStringLiteral(" (") + parts.at(i + 1) + QLatin1Char(')');
    }
    return out.join(QStringLiteral(";;"));
}
} // namespace

MessageAnswer QtDialogs::message(const QString &text, MessageButtons buttons)
{
    QWidget *parent = QApplication::activeWindow();
    if (buttons == MessageButtons::YesNo) {
        const auto answer = QMessageBox::question(parent, kCaption, text, QMessageBox::Yes | QMessageBox::No,
                                                  QMessageBox::Yes);
        return answer == QMessageBox::Yes ? MessageAnswer::Yes : MessageAnswer::No;
    }
    QMessageBox::information(parent, kCaption, text);
    return MessageAnswer::Ok;
}

std::optional<QString> QtDialogs::inputBox(const QString &prompt, const QString &title,
                                           const QString &defaultText)
{
    bool ok = false;
    const QString text =
        QInputDialog::getText(QApplication::activeWindow(), title.isEmpty() ? kCaption : title, prompt,
                              QLineEdit::Normal, defaultText, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

QString QtDialogs::openFileName(const QString &filter)
{
    return QFileDialog::getOpenFileName(QApplication::activeWindow(), kCaption, QString(), qtFilter(filter));
}

QString QtDialogs::saveFileName(const QString &filter, const QString &suggestedName)
{
    return QFileDialog::getSaveFileName(QApplication::activeWindow(), kCaption, suggestedName,
                                        qtFilter(filter));
}

std::optional<QList<int>> QtDialogs::chooseOptions(const QString &title, const QList<QStringList> &groups)
{
    QDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle(title.isEmpty() ? kCaption : title);
    auto *column = new QVBoxLayout(&dialog);
    QList<QButtonGroup *> buttonGroups;
    for (const QStringList &group : groups) {
        auto *box = new QGroupBox(group.value(0), &dialog);
        auto *boxColumn = new QVBoxLayout(box);
        auto *buttons = new QButtonGroup(box);
        for (int k = 1; k < group.size(); ++k) {
            auto *option = new QRadioButton(group.at(k), box);
            option->setChecked(k == 1);
            buttons->addButton(option, k - 1);
            boxColumn->addWidget(option);
        }
        column->addWidget(box);
        buttonGroups << buttons;
    }
    auto *okCancel = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(okCancel, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(okCancel, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    column->addWidget(okCancel);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    QList<int> chosen;
    for (QButtonGroup *buttons : buttonGroups)
        chosen << std::max(buttons->checkedId(), 0);
    return chosen;
}

} // namespace zun
