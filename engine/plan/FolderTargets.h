#pragma once

#include "engine/files/NameFolding.h"

#include <QMultiHash>
#include <QString>

#include <optional>

namespace pagestack {

/// The names that a run writes in one folder, told apart as the file system of the folder does.
/// That is found out at the first names that differ in case or normalization only.
class FolderTargets
{
public:
    explicit FolderTargets(QString folder)
        : m_folder(std::move(folder))
    {
    }

    /// Whether the folder had nothing in it when this was asked first: then no name has to be
    /// looked for on the disk, which may be far away.
    bool isEmpty();

    /// Who writes the file that `name` leads to; none when nobody does.
    std::optional<qsizetype> writer(const QString& name);

    /// `name` has no writer yet.
    void add(const QString& name, qsizetype writer);

private:
    struct Target
    {
        QString name;
        qsizetype writer;
    };

    QString m_folder;
    std::optional<bool> m_isEmpty;
    std::optional<NameFolding> m_folding;
    QMultiHash<QString, Target> m_targets; ///< by the name without any such difference
};

} // namespace pagestack
