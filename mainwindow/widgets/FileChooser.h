#pragma once

#include <QList>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>

class QFileDialog;
class QWidget;

namespace pagestack {

/// The platform's dialogs for choosing files and folders, modal to their window. They do not block:
/// what was chosen comes through a callback, as local file URLs in the order of the dialog; an
/// empty list means that the user cancelled. `done` is called exactly once, unless the window or
/// this object goes first. A dialog starts in the folder of the last choice. Main thread.
class FileChooser : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const QList<QUrl>& urls)>;

    using QObject::QObject;

    /// One or several existing files whose names end in one of `extensions` (without the dot).
    void chooseFiles(QWidget* window, const QString& message, const QStringList& extensions,
                     Done done);
    /// One or several existing folders, by Qt's own dialog.
    void chooseFolders(QWidget* window, const QString& message, Done done);
    /// One folder, which the user may create in the dialog.
    void chooseFolder(QWidget* window, const QString& message, Done done);

    /// One existing text file whose name ends in one of `extensions` (without the dot).
    void chooseTextFile(QWidget* window, const QString& message, const QStringList& extensions,
                        Done done);
    /// The file to write, `proposedName` at first, which need not exist; the dialog asks before it
    /// returns one that does. A name without an extension gets `extension` (without the dot).
    void chooseSaveFile(QWidget* window, const QString& message, const QString& extension,
                        const QString& proposedName, Done done);

    /// Answers a coming dialog with `urls` at once, without showing it; an empty list cancels it.
    /// Several calls answer several dialogs in their order.
    void setNextChoice(const QList<QUrl>& urls);
    /// Of the last dialog, shown or answered beforehand.
    [[nodiscard]] QString lastMessage() const { return m_lastMessage; }
    [[nodiscard]] QStringList lastExtensions() const { return m_lastExtensions; }

private:
    /// Whether the answer was set beforehand; `done` has it then.
    bool answeredBeforehand(const QString& message, const QStringList& extensions,
                            const Done& done);
    QFileDialog* makeDialog(QWidget* window, const QString& message);
    void open(QFileDialog* dialog, Done done);

    QQueue<QList<QUrl>> m_nextChoices;
    QString m_lastMessage;
    QStringList m_lastExtensions;
    QString m_lastFolder;
};

} // namespace pagestack
