#include "mainwindow/widgets/AlertPanel.h"

#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace pagestack {

namespace {

    QMessageBox::Icon iconOf(AlertPanel::Style style)
    {
        switch (style) {
        case AlertPanel::Style::Critical:
            return QMessageBox::Critical;
        case AlertPanel::Style::Question:
            return QMessageBox::Question;
        case AlertPanel::Style::Warning:
            return QMessageBox::Warning;
        case AlertPanel::Style::Informational:
            break;
        }
        return QMessageBox::Information;
    }

    QMessageBox::ButtonRole roleOf(qsizetype index, qsizetype count)
    {
        if (index == 0)
            return QMessageBox::AcceptRole;
        return index == count - 1 ? QMessageBox::RejectRole : QMessageBox::ActionRole;
    }

} // namespace

void AlertPanel::ask(QWidget* window, Style style, const QString& title, const QString& text,
                     const QStringList& buttons, Done done)
{
    const QStringList titles = buttons.isEmpty() ? QStringList(tr("OK")) : buttons;
    m_lastTitle = title;
    m_lastText = text;
    m_lastButtons = titles;
    ++m_askedCount;
    if (!m_nextAnswers.isEmpty()) {
        const int answer = m_nextAnswers.dequeue();
        if (done)
            done(answer);
        return;
    }

    auto* const box = new QMessageBox(iconOf(style), title, text, QMessageBox::NoButton, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    QList<QAbstractButton*> made;
    for (const QString& each : titles)
        made.append(box->addButton(each, roleOf(made.size(), titles.size())));
    box->setDefaultButton(
        qobject_cast<QPushButton*>(style == Style::Warning ? made.constLast() : made.constFirst()));
    box->setEscapeButton(made.constLast());
    connect(box, &QMessageBox::finished, this, [box, made, done = std::move(done)] {
        const qsizetype pressed = made.indexOf(box->clickedButton());
        if (done)
            done(static_cast<int>(pressed >= 0 ? pressed : made.size() - 1));
    });
    box->open();
}

void AlertPanel::setNextAnswer(int button) { m_nextAnswers.enqueue(button); }

} // namespace pagestack
