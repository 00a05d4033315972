#include "mainwindow/settings/NameExample.h"

#include "engine/plan/ChosenPages.h"
#include "engine/plan/OutputNames.h"
#include "engine/settings/Settings.h"
#include "filelist/FileList.h"
#include "filelist/ListChanges.h"
#include "mainwindow/settings/RunChoices.h"

#include <QLabel>

#include <algorithm>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int pauseMs = 60;

} // namespace

NameExample::NameExample(QLabel& label, const FileList& files, const QAbstractItemModel& model,
                         const Settings& settings, const RunChoices& choices)
    : m_label(label)
    , m_files(files)
    , m_settings(settings)
    , m_choices(choices)
    , m_pause(pauseMs, [this] { show(); })
{
    const auto follow = [this] { m_pause.begin(); };
    onListChange(model, this, follow);
    connect(&model, &QAbstractItemModel::dataChanged, this, follow);
    connect(&settings, &Settings::outputTypeChanged, this, follow);
    connect(&settings, &Settings::separatorChanged, this, follow);
    connect(&settings, &Settings::isSplitTIFFIntoSinglePagesChanged, this, follow);
    connect(&choices, &RunChoices::changed, this, follow);
    show();
}

void NameExample::show()
{
    try {
        m_label.setText(text());
    } catch (const OptionError&) {
        m_label.clear(); // the tab of more options says what is wrong
    }
}

QString NameExample::text() const
{
    const FileList::Items& items = m_files.items();
    ChosenPageCounter counter(m_choices.options());
    const auto first = std::find_if(items.begin(), items.end(), [&](const FileList::Item& item) {
        return item->isSelected() && counter.count(*item) > 0;
    });
    const QString line = u"%1 \u2192 %2"_s;
    if (first == items.end())
        return line.arg(u"scan.tif"_s, exampleName(m_choices.all()));
    OutputFile output;
    output.filename = (*first)->localFile();
    output.fileItems = { *first };
    const OutputNames names(m_settings, m_choices.options());
    output = names.completed({ output }).first();
    const int page
        = isKeptTogether(m_settings) ? 0 : chosenPages(**first, m_choices.options()).first();
    return line.arg((*first)->name(), names.name(output, page));
}

} // namespace pagestack
