#include "mainwindow/import/ImportFilesWindowController.h"

#include "engine/support/Application.h"
#include "engine/support/SystemLog.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "ui_ImportFiles.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethod>
#include <QTextCursor>
#include <QTextDocument>

#include <tuple>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int typingPauseMs = 200;
    constexpr int firstOccurrence = 1;
    constexpr int lastOccurrence = 2;

    // The methods as the radio buttons name them, in their dynamic property "tag".
    constexpr int fromFileTag = 0;
    constexpr int fromTextTag = 1;

    void turnOff(QRadioButton& radio)
    {
        radio.setAutoExclusive(false); // such a group would keep one of its buttons on
        radio.setChecked(false);
        radio.setAutoExclusive(true);
    }

    /// Ends a composition that an input method has not handed over yet.
    void endEditing() { QGuiApplication::inputMethod()->commit(); }

} // namespace

ImportFilesWindowController::ImportFilesWindowController(QWidget* window, AlertPanel& alerts,
                                                         FileChooser& chooser)
    : QDialog(window, Qt::Sheet)
    , m_alerts(alerts)
    , m_chooser(chooser)
    , m_ui(std::make_unique<Ui::ImportFiles>())
    , m_typingPause(typingPauseMs, [this] { follow(); })
    , m_isCheckOutdated(std::make_shared<std::atomic<bool>>(false))
    , m_diskChecks(this)
{
    m_ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    m_diskChecks.setMaxThreadCount(1);
    connect(m_ui->importText, &QPlainTextEdit::textChanged, &m_typingPause,
            qOverload<>(&QTimer::start));
    for (const QRadioButton* radio : { m_ui->importFromFileBtn, m_ui->importFromTextBtn })
        connect(radio, &QRadioButton::clicked, this, [this, radio] { importMethodChanged(radio); });
    connect(m_ui->browseBtn, &QPushButton::clicked, this,
            &ImportFilesWindowController::browseImportFileAction);
    connect(m_ui->pasteFromClipboardBtn, &QPushButton::clicked, this,
            &ImportFilesWindowController::pasetFromClipboardAction);
    connect(m_ui->importBtn, &QPushButton::clicked, this,
            &ImportFilesWindowController::importAction);
    connect(m_ui->cancelImportBtn, &QPushButton::clicked, this,
            &ImportFilesWindowController::cancelAction);
    awakeFromNib();
    resetView();
}

ImportFilesWindowController::~ImportFilesWindowController() { *m_isCheckOutdated = true; }

void ImportFilesWindowController::awakeFromNib()
{
    const std::tuple<QAbstractButton*, QChar, int> letters[] = {
        { m_ui->importFromFileBtn, u'F', lastOccurrence },
        { m_ui->importFromTextBtn, u'T', lastOccurrence },
        { m_ui->pasteFromClipboardBtn, u'p', firstOccurrence },
        { m_ui->importBtn, u'i', firstOccurrence },
    };
    for (const auto& [button, letter, occurrance] : letters)
        setButtonKeyCharacter(button, letter, button->palette().color(button->foregroundRole()),
                              occurrance);
    importMethodChanged(m_ui->importFromFileBtn);
}

void ImportFilesWindowController::setButtonKeyCharacter(QAbstractButton* button,
                                                        const QString& keyChar, const QColor& color,
                                                        int occurrance)
{
    setKeyLetter(button, keyChar, color,
                 occurrance == firstOccurrence ? Occurrence::FirstInAnyCase
                                               : Occurrence::LastInThisCase);
}

void ImportFilesWindowController::importMethodChanged(const QAbstractButton* sender)
{
    bool isNumber = false;
    const int tag = sender->property("tag").toInt(&isNumber);
    const bool isFile = isNumber && tag == fromFileTag;
    const bool isText = isNumber && tag == fromTextTag;
    m_ui->importFile->clear();
    m_ui->importText->clear();
    turnOff(*m_ui->importFromFileBtn);
    turnOff(*m_ui->importFromTextBtn);
    m_ui->importFile->setEnabled(isFile);
    m_ui->browseBtn->setEnabled(isFile);
    m_ui->importText->setEnabled(isText);
    m_ui->pasteFromClipboardBtn->setEnabled(isText);
    // By role, so that the colours follow the theme; that of the text follows the enabled state.
    m_ui->importText->viewport()->setBackgroundRole(isText ? QPalette::Base : QPalette::Window);
    if (isFile || isText) {
        QRadioButton* const radio = isFile ? m_ui->importFromFileBtn : m_ui->importFromTextBtn;
        radio->setChecked(true);
        radio->setFocus();
    }
    showFound({});
}

void ImportFilesWindowController::browseImportFileAction()
{
    m_chooser.chooseTextFile(this, tr("Select Text File To Import:"), { u"txt"_s },
                             [this](const QList<QUrl>& urls) {
                                 if (!urls.isEmpty())
                                     m_ui->importFile->setText(urls.last().toLocalFile());
                             });
}

void ImportFilesWindowController::pasetFromClipboardAction()
{
    const QString text = QGuiApplication::clipboard()->text();
    if (text.isEmpty())
        return;
    parseText(text);
    QStringList paths;
    for (const QUrl& file : std::as_const(m_files))
        paths.append(file.toLocalFile()
                     + (m_pageChoices.contains(file) ? u'\t' + m_pageChoices.value(file) : u""_s));
    // As an edit of the text, so that what was there comes back by Undo.
    QTextCursor all(m_ui->importText->document());
    all.select(QTextCursor::Document);
    all.insertText(paths.join(u'\n'));
    m_typingPause.stop(); // what was left out of the clipboard's text stays to be read
}

void ImportFilesWindowController::parseFile(const QString& path)
{
    m_ui->importFile->setText(path);
    QString text;
    try {
        text = readPathList(path);
    } catch (const std::exception& error) {
        systemLogError(u"parseFile:"_s, error);
    }
    parseText(text);
}

void ImportFilesWindowController::parseText(const QString& text)
{
    PathList list;
    try {
        list = parsePathList(text, m_allowedTypes);
    } catch (const std::exception& error) {
        systemLogError(u"parseText:"_s, error);
    }
    m_files = list.files;
    m_pageChoices = list.pageChoices;
    showFound(list);
}

/// Shows what an import would find now; `files` waits for Import.
void ImportFilesWindowController::follow()
{
    try {
        showFound(parsePathList(enteredText(), m_allowedTypes));
    } catch (const std::exception& error) {
        systemLogError(u"follow"_s, error);
    }
}

QString ImportFilesWindowController::enteredText() const
{
    // toPlainText() makes blanks of no-break spaces, which names of files may contain.
    return m_ui->importText->document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

void ImportFilesWindowController::showFound(const PathList& list)
{
    m_typingPause.stop();
    m_ui->totalFilesFound->setText(tr("Total Files Found : %1").arg(list.files.size()));
    showLinesLeftOut(list, 0);
    countMissingFiles(list);
}

void ImportFilesWindowController::showLinesLeftOut(const PathList& list, qsizetype missing)
{
    QStringList parts;
    if (list.duplicates > 0)
        parts.append(list.duplicates == 1
                         ? tr("1 duplicate")
                         : tr("%n duplicates", nullptr, static_cast<int>(list.duplicates)));
    if (list.otherLines > 0)
        parts.append(list.otherLines == 1 ? tr("1 line that is no TIFF file")
                                          : tr("%n lines that are no TIFF files", nullptr,
                                               static_cast<int>(list.otherLines)));
    if (missing > 0)
        parts.append(missing == 1
                         ? tr("1 file that does not exist")
                         : tr("%n files that do not exist", nullptr, static_cast<int>(missing)));
    m_ui->linesLeftOut->setText(parts.join(tr(", ")));
}

/// Asks the disk, which may be slow to answer, on another thread.
void ImportFilesWindowController::countMissingFiles(const PathList& list)
{
    *m_isCheckOutdated = true;
    if (list.files.isEmpty())
        return;
    m_isCheckOutdated = std::make_shared<std::atomic<bool>>(false);
    m_diskChecks.start([this, list, isOutdated = m_isCheckOutdated] {
        const qsizetype missing = countMissing(list.files, *isOutdated);
        QMetaObject::invokeMethod(
            this,
            [this, list, isOutdated, missing] {
                if (!*isOutdated)
                    showLinesLeftOut(list, missing);
            },
            Qt::QueuedConnection);
    });
}

void ImportFilesWindowController::importAction()
{
    endEditing();
    const bool isFile = m_ui->importFromFileBtn->isChecked();
    const bool isText = m_ui->importFromTextBtn->isChecked();
    const QString path = m_ui->importFile->text();
    const QString text = enteredText();
    if (isFile && path.isEmpty()) {
        alert(tr("Please select file to import!"), m_ui->browseBtn);
        return;
    }
    if (isText && text.isEmpty()) {
        alert(tr("Please paste file(s) path to import!"), m_ui->importText);
        return;
    }
    if (isFile)
        parseFile(path);
    else if (isText)
        parseText(text);
    if (m_files.isEmpty()) {
        alert(tr("No File(s) Found!"), nullptr);
        return;
    }
    if (m_delegate != nullptr)
        m_delegate->ImportFilesWindowControllerDidFinish(*this);
    accept();
}

void ImportFilesWindowController::alert(const QString& text, QWidget* next)
{
    m_alerts.ask(this, AlertPanel::Style::Informational, getAppTitle(u""_s), text, {}, [next](int) {
        if (next != nullptr)
            next->setFocus();
    });
}

void ImportFilesWindowController::cancelAction()
{
    endEditing();
    QDialog::reject();
}

void ImportFilesWindowController::reject() { cancelAction(); }

void ImportFilesWindowController::resetView()
{
    m_ui->importFile->clear();
    m_ui->importText->clear();
    m_files.clear();
    m_pageChoices.clear();
    showFound({});
}

} // namespace pagestack
