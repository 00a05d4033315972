#pragma once

#include "engine/sources/PathList.h"
#include "engine/support/Pause.h"

#include <QDialog>
#include <QList>
#include <QString>
#include <QThreadPool>
#include <QUrl>

#include <atomic>
#include <memory>

class QAbstractButton;
class QColor;

namespace Ui {
class ImportFiles;
}

namespace pagestack {

class AlertPanel;
class FileChooser;
class ImportFilesWindowController;

/// Who takes what the import dialog found.
class ImportFilesWindowControllerDelegate
{
public:
    virtual ~ImportFilesWindowControllerDelegate() = default;
    /// The user accepted `files` of the dialog, which are not empty; it closes after this call.
    virtual void ImportFilesWindowControllerDidFinish(ImportFilesWindowController& dialog) = 0;
};

/// The sheet that takes a list of paths, from a text file or typed and pasted, and hands over the
/// TIFF files that it names. Kept between uses: `resetView` empties it for the next one, and the
/// method that was chosen last stays. Main thread.
class ImportFilesWindowController : public QDialog
{
    Q_OBJECT

public:
    /// `window`, which the sheet belongs to and is modal for, owns it; `alerts` and `chooser`
    /// outlive it.
    ImportFilesWindowController(QWidget* window, AlertPanel& alerts, FileChooser& chooser);
    ~ImportFilesWindowController() override;
    ImportFilesWindowController(const ImportFilesWindowController&) = delete;
    ImportFilesWindowController& operator=(const ImportFilesWindowController&) = delete;

    /// Not owned; may be null.
    ImportFilesWindowControllerDelegate* delegate() const { return m_delegate; }
    void setDelegate(ImportFilesWindowControllerDelegate* delegate) { m_delegate = delegate; }
    /// The files that the last parse found, each once, in the order of the list. They need not
    /// exist.
    const QList<QUrl>& files() const { return m_files; }
    void setFiles(const QList<QUrl>& files) { m_files = files; }
    /// Of those of the files for which pages are chosen.
    const QHash<QUrl, QString>& pageChoices() const { return m_pageChoices; }
    /// Extensions parted by ",". A line is taken when its extension, in upper case, is one of them.
    QString allowedTypes() const { return m_allowedTypes; }
    void setAllowedTypes(const QString& allowedTypes) { m_allowedTypes = allowedTypes; }

    /// Marks the key letters and chooses the method "from file"; the constructor calls it.
    void awakeFromNib();
    /// Underlines the letter `keyChar` of the button's title: for `occurrance` 1 the first one in
    /// either case, for any other number the last one in the case given. Nothing changes without a
    /// button, a letter, a valid colour, or when the title has no such letter.
    void setButtonKeyCharacter(QAbstractButton* button, const QString& keyChar, const QColor& color,
                               int occurrance);
    /// Empties both methods and enables the one of `sender`'s property `tag`: 0 from file, 1 from
    /// text, none for any other.
    void importMethodChanged(const QAbstractButton* sender);
    void browseImportFileAction();
    /// Replaces the text by the TIFF files that the text of the clipboard names; nothing happens
    /// when it holds no text.
    void pasetFromClipboardAction();
    /// Reads the text file at `path` into `files`; of one that cannot be read there are none.
    void parseFile(const QString& path);
    void parseText(const QString& text);
    void importAction();
    void cancelAction();
    /// Empties fields and `files`.
    void resetView();

public slots:
    /// Escape and the close button of the window: Cancel.
    void reject() override;

private:
    void showFound(const PathList& list);
    void showLinesLeftOut(const PathList& list, qsizetype missing);
    void countMissingFiles(const PathList& list);
    void follow();
    QString enteredText() const;
    /// Tells `text`; `next`, where there is one, has the focus after it.
    void alert(const QString& text, QWidget* next);

    AlertPanel& m_alerts;
    FileChooser& m_chooser;
    std::unique_ptr<Ui::ImportFiles> m_ui;
    ImportFilesWindowControllerDelegate* m_delegate = nullptr;
    QString m_allowedTypes;
    QList<QUrl> m_files;
    QHash<QUrl, QString> m_pageChoices;
    Pause m_typingPause; ///< what is typed is counted when typing pauses
    std::shared_ptr<std::atomic<bool>> m_isCheckOutdated;
    QThreadPool m_diskChecks; ///< the last member: its end waits for the check that is under way
};

} // namespace pagestack
