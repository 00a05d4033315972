#include "filelist/RowStatus.h"

#include "filelist/FileItem.h"

#include <QCoreApplication>

namespace pagestack {

namespace {

    using State = RowStatus::State;

    constexpr int pauseMs = 100; // a run may tell of a thousand pages a second

    /// What the file itself says.
    State stateAsMet(const FileItem& item)
    {
        if (item.pages() > 0)
            return item.fault().isEmpty() ? State::None : State::Warning;
        return item.isMissing() ? State::Missing : State::Unreadable;
    }

    QString wordFor(const char* text)
    {
        return QCoreApplication::translate("pagestack::RowStatus", text);
    }

} // namespace

QString RowStatus::text() const
{
    switch (state) {
    case State::None:
        break;
    case State::Missing:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Missing"));
    case State::Unreadable:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Unreadable"));
    case State::Waiting:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Waiting"));
    case State::Converting:
        if (pages > 0)
            return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Page %1 of %2"))
                .arg(page)
                .arg(pages);
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Converting"));
    case State::Done:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Done"));
    case State::Warning:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Warning"));
    case State::Failed:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Failed"));
    case State::NotReached:
        return wordFor(QT_TRANSLATE_NOOP("pagestack::RowStatus", "Not reached"));
    }
    return {};
}

bool isInGroup(State state, RowGroup group)
{
    switch (group) {
    case RowGroup::All:
        break;
    case RowGroup::Failed:
        return state == State::Failed || state == State::Missing || state == State::Unreadable;
    case RowGroup::Warnings:
        return state == State::Warning;
    case RowGroup::NotReached:
        return state == State::NotReached;
    }
    return true;
}

RowStatuses::RowStatuses(QObject* parent)
    : QObject(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(pauseMs);
    connect(&m_pause, &QTimer::timeout, this, &RowStatuses::changed);
}

void RowStatuses::set(const QString& path, const RowStatus& status)
{
    if (status.state != State::None)
        m_ofRun.insert(path, status);
    else if (!m_ofRun.remove(path))
        return; // as for nearly all files of a load
    if (!m_pause.isActive())
        m_pause.start();
}

void RowStatuses::replace(const QHash<QString, RowStatus>& statuses)
{
    m_ofRun = statuses;
    m_pause.start();
}

RowStatus RowStatuses::of(const FileItem& item) const
{
    if (const auto known = m_ofRun.constFind(item.path()); known != m_ofRun.cend())
        return *known;
    const State state = stateAsMet(item);
    return { state, 0, 0, state == State::None ? QString() : item.fault() };
}

bool RowStatuses::isConverted(const FileItem& item) const
{
    const auto known = m_ofRun.constFind(item.path());
    return known != m_ofRun.cend()
        && (known->state == State::Done || (known->state == State::Warning && known->pages > 0));
}

std::function<State(const FileItem&)> RowStatuses::states() const
{
    return [ofRun = m_ofRun](const FileItem& item) {
        const auto known = ofRun.isEmpty() ? ofRun.cend() : ofRun.constFind(item.path());
        return known == ofRun.cend() ? stateAsMet(item) : known->state;
    };
}

} // namespace pagestack
