#pragma once

#include <QWidget>

#include <memory>

class QAbstractItemModel;
class QLineEdit;

namespace Ui {
class SettingsPane;
}

namespace pagestack {

class FileList;
class NameExample;
class PresetMenu;
class RecentFolders;
class RunChoices;
class Settings;
struct Services;

/// The right-hand side of the window: each control edits one field of the settings and follows it.
/// Main thread.
class SettingsPane : public QWidget
{
    Q_OBJECT

public:
    explicit SettingsPane(QWidget* parent = nullptr);
    ~SettingsPane() override;
    SettingsPane(const SettingsPane&) = delete;
    SettingsPane& operator=(const SettingsPane&) = delete;

    /// Connects the controls to `settings`. To be called once; both outlive the pane.
    void bind(Settings& settings, const Services& services);
    /// Shows what the first of the ticked files will become. To be called once, after bind(); both
    /// outlive the pane.
    void showExampleOf(const FileList& files, const QAbstractItemModel& model);

    /// The choices of a run beside the settings. To be asked after `bind`.
    RunChoices& choices() const { return *m_choices; }

    /// Shows and enables what the output type has options for.
    void setSplitOptions();
    /// Enables the options of the output folder, if there is one, and shows the quality.
    void followSettings();
    /// What is wrong with what was typed for an option, whose tab is shown then; empty: nothing.
    QString commitChoices();
    /// Takes over what is typed but not committed yet, and ends the selection in whatever field of
    /// the window has the keys.
    void endEditing();
    void chooseOutputFolder();
    /// Offers the present output folder from now on.
    void rememberOutputFolder();
    void showFormat();
    /// Shows the format and gives it the keys.
    void takeKeys();
    /// Shows the output folder and gives the button that chooses one the keys.
    void showOutputFolder();

    /// What a field that takes a number holds after an edit: `fallback` for a text that is empty or
    /// zero, else the text without what is no digit at its ends.
    static QString filteredNumber(const QString& text, const QString& fallback);
    /// Filters the text of a field whose property "tag" says that it takes a number.
    static void controlTextDidChange(QLineEdit* field);

signals:
    void helpRequested();

protected:
    void changeEvent(QEvent* event) override;

private:
    void commitFields();
    void alignLabels();
    void colourLink();
    void restoreDefaults();

    std::unique_ptr<Ui::SettingsPane> m_ui;
    Settings* m_settings = nullptr;
    const Services* m_services = nullptr;
    std::unique_ptr<RunChoices> m_choices;
    std::unique_ptr<PresetMenu> m_presets;
    std::unique_ptr<RecentFolders> m_recent;
    std::unique_ptr<NameExample> m_example;
};

} // namespace pagestack
