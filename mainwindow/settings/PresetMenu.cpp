#include "mainwindow/settings/PresetMenu.h"

#include "engine/log/ShownReason.h"
#include "engine/options/Presets.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/settings/RunChoices.h"
#include "mainwindow/widgets/FileChooser.h"

#include <QInputDialog>
#include <QMenu>
#include <QPushButton>

#include <algorithm>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString extension = u"json"_s;

    bool isSaved(const QString& name)
    {
        return std::ranges::any_of(savedPresets(),
                                   [&](const Preset& preset) { return preset.name == name; });
    }

    /// A name of a preset may hold what marks a key in a menu.
    QString menuText(QString name) { return name.replace(u'&', u"&&"_s); }

} // namespace

PresetMenu::PresetMenu(QPushButton& button, RunChoices& choices, const Services& services,
                       std::function<QString()> commit)
    : m_button(button)
    , m_choices(choices)
    , m_services(services)
    , m_commit(std::move(commit))
    , m_menu(*new QMenu(&button))
{
    button.setMenu(&m_menu);
    connect(&m_menu, &QMenu::aboutToShow, this, &PresetMenu::fill);
}

void PresetMenu::fill()
{
    m_commit();
    m_menu.clear();
    QList<Preset> shipped = shippedPresets();
    for (Preset& preset : shipped) // those of the user have their names from him
        preset.name = shownReason(preset.name);
    addPresets(shipped);
    m_menu.addSeparator();
    QStringList troubles;
    const QList<Preset> saved = savedPresets(&troubles);
    addPresets(saved);
    for (const QString& trouble : troubles)
        m_menu.addAction(menuText(shownReason(trouble)))->setEnabled(false);
    m_menu.addSeparator();
    m_menu.addAction(tr("Save As..."), this, &PresetMenu::askForName);
    m_menu.addAction(tr("Import..."), this, &PresetMenu::importFile);
    m_menu.addAction(tr("Export..."), this, &PresetMenu::exportFile);
    QMenu* remove = m_menu.addMenu(tr("Remove"));
    remove->setEnabled(!saved.isEmpty());
    for (const Preset& preset : saved)
        remove->addAction(menuText(preset.name), this, [this, name = preset.name] {
            if (!removePreset(name))
                m_services.ask(m_button.window(), AlertPanel::Style::Critical,
                               tr("The preset %1 cannot be removed.").arg(name));
        });
}

void PresetMenu::addPresets(const QList<Preset>& presets)
{
    const ConversionOptions current = m_choices.all();
    for (Preset preset : presets) {
        // Whether a record is kept is a habit of the user.
        preset.options.run.writesRecord = current.run.writesRecord;
        QAction* action = m_menu.addAction(menuText(preset.name), this, [this, preset] {
            m_choices.setAll(preset.options);
            emit presetTaken();
            m_services.synchronize(m_button.window());
        });
        action->setCheckable(true);
        action->setChecked(preset.options == current);
    }
}

/// False when the user was told what is wrong with what is typed.
bool PresetMenu::isCommitted()
{
    const QString fault = m_commit();
    if (!fault.isEmpty())
        m_services.ask(m_button.window(), AlertPanel::Style::Critical, fault);
    return fault.isEmpty();
}

/// Without the habit of keeping a record, which is not of a preset.
ConversionOptions PresetMenu::current() const
{
    ConversionOptions options = m_choices.all();
    options.run.writesRecord = false;
    return options;
}

void PresetMenu::askForName()
{
    if (!isCommitted())
        return;
    auto* dialog = new QInputDialog(m_button.window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Save Preset"));
    dialog->setLabelText(tr("Name:"));
    dialog->setOkButtonText(tr("Save"));
    connect(dialog, &QInputDialog::textValueSelected, this, [this](const QString& text) {
        const Preset preset { text.trimmed(), current() };
        if (!isSaved(preset.name))
            return save(preset);
        m_services.ask(m_button.window(), AlertPanel::Style::Critical,
                       tr("There is a preset %1 already.").arg(preset.name),
                       { tr("Replace"), tr("Cancel") }, [this, preset](int button) {
                           if (button == 0)
                               save(preset);
                       });
    });
    dialog->open();
}

void PresetMenu::save(const Preset& preset)
{
    tellOfFaults([&] { savePreset(preset); });
}

void PresetMenu::importFile()
{
    m_services.chooser.chooseTextFile(
        m_button.window(), tr("Import Preset:"), { extension }, [this](const QList<QUrl>& urls) {
            if (urls.isEmpty())
                return;
            Preset preset;
            if (!tellOfFaults([&] { preset = readPreset(urls.first().toLocalFile()); }))
                return;
            // One that is there stays, whatever it holds.
            const QString name = preset.name;
            for (int number = 2; isSaved(preset.name)
                 || std::ranges::count(shippedPresets(), preset.name, &Preset::name) > 0;
                 ++number)
                preset.name = u"%1 %2"_s.arg(name, QString::number(number));
            save(preset);
        });
}

void PresetMenu::exportFile()
{
    if (!isCommitted())
        return;
    m_services.chooser.chooseSaveFile(
        m_button.window(), tr("Export the present options as a preset:"), extension,
        tr("Preset") + u'.' + extension, [this](const QList<QUrl>& urls) {
            if (!urls.isEmpty())
                tellOfFaults([&] {
                    const QString path = urls.first().toLocalFile();
                    writePreset({ u""_s, current() }, path);
                });
        });
}

/// False when `work` failed, which the user was told.
bool PresetMenu::tellOfFaults(const std::function<void()>& work)
{
    try {
        work();
        return true;
    } catch (const std::exception& error) {
        m_services.tell(m_button.window(), QString::fromUtf8(error.what()));
        return false;
    }
}

} // namespace pagestack
