#include "filelist/RowStatus.h"

#include "filelist/FileItem.h"

#include <QCoreApplication>
#include <QLocale>

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
                .arg(QLocale().toString(page), QLocale().toString(pages));
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
    , m_pause(pauseMs, [this] { emit changed(); })
{
}

void RowStatuses::set(const QString& path, const RowStatus& status)
{
    if (status.state != State::None)
        keep(path, status);
    else if (!forget(path))
        return; // as for nearly all files of a load
    m_pause.begin();
}

void RowStatuses::replace(const QHash<QString, RowStatus>& statuses)
{
    m_words.clear();
    m_details.clear();
    m_reasons.clear();
    for (auto status = statuses.cbegin(); status != statuses.cend(); ++status)
        keep(status.key(), *status);
    m_pause.start();
}

void RowStatuses::keep(const QString& path, const RowStatus& status)
{
    const bool hasNumbers = status.state == State::Converting || status.state == State::Warning;
    if (status.reason.isEmpty() && !hasNumbers) {
        m_details.remove(path);
        m_words.insert(path, status.state);
        return;
    }
    m_words.remove(path);
    RowStatus& kept = m_details[path];
    kept = status;
    kept.reason = *m_reasons.insert(status.reason);
}

bool RowStatuses::forget(const QString& path)
{
    const bool hadWord = m_words.remove(path);
    return m_details.remove(path) || hadWord;
}

RowStatus RowStatuses::of(const FileItem& item) const
{
    if (const auto known = m_details.constFind(item.path()); known != m_details.cend())
        return *known;
    if (const State state = m_words.value(item.path(), State::None); state != State::None)
        return { .state = state };
    const State state = stateAsMet(item);
    return { state, 0, 0, state == State::None ? QString() : item.fault() };
}

bool RowStatuses::isConverted(const FileItem& item) const
{
    if (m_words.value(item.path(), State::None) == State::Done)
        return true;
    const auto known = m_details.constFind(item.path());
    return known != m_details.cend()
        && (known->state == State::Done || (known->state == State::Warning && known->pages > 0));
}

std::function<State(const FileItem&)> RowStatuses::states() const
{
    if (m_words.isEmpty() && m_details.isEmpty())
        return stateAsMet;
    return [words = m_words, details = m_details](const FileItem& item) {
        if (const auto known = details.constFind(item.path()); known != details.cend())
            return known->state;
        const State state = words.value(item.path(), State::None);
        return state == State::None ? stateAsMet(item) : state;
    };
}

} // namespace pagestack
