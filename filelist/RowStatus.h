#pragma once

#include "engine/support/Pause.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>

namespace pagestack {

class FileItem;

/// What is known of a source of the list: how it was met, and what the last run made of it.
struct RowStatus
{
    enum class State {
        None,
        Missing,
        Unreadable,
        Waiting,
        Converting,
        Done,
        Warning,
        Failed,
        NotReached,
    };

    State state = State::None;
    int page = 0; ///< in hand, from 1; of `pages`; while Converting
    int pages = 0; ///< none where the options of the run have left all of them out
    QString reason {}; ///< a line each; empty where there is nothing to say

    QString text() const; ///< "Done", "Page 3 of 7"; empty for None

    friend bool operator==(const RowStatus&, const RowStatus&) = default;
};

/// The kinds of files that a list can be narrowed to.
enum class RowGroup {
    All,
    Failed, ///< by a run, or since there is nothing to convert: missing and unreadable ones too
    Warnings,
    NotReached, ///< by a run that was cancelled
};
bool isInGroup(RowStatus::State state, RowGroup group);

/// The statuses of the files of a list. Those of a run are kept by path and outlive the row, which
/// may come back; the others follow from the file itself and take no room. Main thread.
///
/// A run may tell of very many files. Of those of which there is no more to say than a word, which
/// nearly all are, the word alone is kept, without numbers of pages.
class RowStatuses : public QObject
{
    Q_OBJECT

public:
    explicit RowStatuses(QObject* parent = nullptr);

    /// None takes back what a run has said.
    void set(const QString& path, const RowStatus& status);
    /// Replaces all that runs have said.
    void replace(const QHash<QString, RowStatus>& statuses);

    RowStatus of(const FileItem& item) const;
    /// Whether the last run has written all that was wanted of the file.
    bool isConverted(const FileItem& item) const;
    /// The state of any item as it is now; any thread, as long as nobody changes the items.
    std::function<RowStatus::State(const FileItem& item)> states() const;

signals:
    void changed(); ///< many changes are one, a moment later

private:
    void keep(const QString& path, const RowStatus& status);
    bool forget(const QString& path);

    QHash<QString, RowStatus::State> m_words; ///< that a run has said, by path
    QHash<QString, RowStatus> m_details; ///< the same where there is more to say
    QSet<QString> m_reasons; ///< equal ones share their text
    Pause m_pause;
};

} // namespace pagestack
