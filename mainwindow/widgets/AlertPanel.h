#pragma once

#include <QObject>
#include <QQueue>
#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace pagestack {

/// The one way in which the windows ask the user something. Questions are modal to their window and
/// do not block: the answer comes through a callback. Main thread.
class AlertPanel : public QObject
{
    Q_OBJECT

public:
    enum class Style {
        Critical,
        Informational,
        Question, ///< there is something to be chosen
        Warning, ///< of what ends something; Return presses the last button, which does not
    };
    /// Takes the index of the pressed button.
    using Done = std::function<void(int button)>;

    using QObject::QObject;

    /// Asks `text` over `window`. `buttons` are plain titles: the first is the default, the last is
    /// what Escape and closing the box mean; without any there is one, "OK". `done` is called
    /// exactly once, unless `window` or this object goes first; it may be empty.
    void ask(QWidget* window, Style style, const QString& title, const QString& text,
             const QStringList& buttons, Done done);

    /// Answers a coming question with button `button` at once, without showing it. Several calls
    /// answer several questions in their order.
    void setNextAnswer(int button);
    /// Of the last question: its text, its title and its buttons.
    [[nodiscard]] QString lastText() const { return m_lastText; }
    [[nodiscard]] QString lastTitle() const { return m_lastTitle; }
    [[nodiscard]] QStringList lastButtons() const { return m_lastButtons; }
    /// How many questions were asked, answered beforehand or not.
    [[nodiscard]] int askedCount() const { return m_askedCount; }

private:
    QQueue<int> m_nextAnswers;
    QString m_lastTitle;
    QString m_lastText;
    QStringList m_lastButtons;
    int m_askedCount = 0;
};

} // namespace pagestack
