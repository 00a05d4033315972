#include "mainwindow/widgets/FileChooser.h"

#include <QAbstractItemView>
#include <QFileDialog>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// "*.tif *.tiff"
    QString patternsOf(const QStringList& extensions)
    {
        QStringList patterns;
        for (const QString& extension : extensions)
            patterns.append(u"*."_s + extension);
        return patterns.join(u' ');
    }

} // namespace

void FileChooser::chooseFiles(QWidget* window, const QString& message,
                              const QStringList& extensions, Done done)
{
    if (answeredBeforehand(message, extensions, done))
        return;
    QFileDialog* const dialog = makeDialog(window, message);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    if (!extensions.isEmpty())
        dialog->setNameFilter(tr("TIFF files (%1)").arg(patternsOf(extensions)));
    dialog->setLabelText(QFileDialog::Accept, tr("Add"));
    open(dialog, std::move(done));
}

void FileChooser::chooseFolders(QWidget* window, const QString& message, Done done)
{
    if (answeredBeforehand(message, {}, done))
        return;
    QFileDialog* const dialog = makeDialog(window, message);
    // Through Qt the platforms' dialogs return several files or one folder. Qt's own returns
    // several folders when its lists let the user mark them.
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, tr("Add"));
    for (const QString& name : { u"listView"_s, u"treeView"_s }) {
        if (auto* const list = dialog->findChild<QAbstractItemView*>(name))
            list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    open(dialog, std::move(done));
}

void FileChooser::chooseFolder(QWidget* window, const QString& message, Done done)
{
    if (answeredBeforehand(message, {}, done))
        return;
    QFileDialog* const dialog = makeDialog(window, message);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, tr("Select"));
    open(dialog, std::move(done));
}

void FileChooser::chooseTextFile(QWidget* window, const QString& message,
                                 const QStringList& extensions, Done done)
{
    if (answeredBeforehand(message, extensions, done))
        return;
    QFileDialog* const dialog = makeDialog(window, message);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(tr("Text files (%1)").arg(patternsOf(extensions)));
    dialog->setLabelText(QFileDialog::Accept, tr("Select"));
    open(dialog, std::move(done));
}

void FileChooser::chooseSaveFile(QWidget* window, const QString& message, const QString& extension,
                                 const QString& proposedName, Done done)
{
    if (answeredBeforehand(message, { extension }, done))
        return;
    QFileDialog* const dialog = makeDialog(window, message);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(extension);
    dialog->selectFile(proposedName);
    open(dialog, std::move(done));
}

void FileChooser::setNextChoice(const QList<QUrl>& urls) { m_nextChoices.enqueue(urls); }

bool FileChooser::answeredBeforehand(const QString& message, const QStringList& extensions,
                                     const Done& done)
{
    m_lastMessage = message;
    m_lastExtensions = extensions;
    if (m_nextChoices.isEmpty())
        return false;
    done(m_nextChoices.dequeue());
    return true;
}

QFileDialog* FileChooser::makeDialog(QWidget* window, const QString& message)
{
    auto* const dialog = new QFileDialog(window, message, m_lastFolder);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setSupportedSchemes({ u"file"_s });
    return dialog;
}

void FileChooser::open(QFileDialog* dialog, Done done)
{
    connect(dialog, &QFileDialog::finished, this,
            [this, dialog, done = std::move(done)](int result) {
                if (result != QDialog::Accepted) {
                    done({});
                    return;
                }
                m_lastFolder = dialog->directory().absolutePath();
                done(dialog->selectedUrls());
            });
    dialog->open();
}

} // namespace pagestack
