#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace pagestack {

/// What `command` says, when it fails, null when it is content; "skipped" when there is none such.
inline QString complaintOf(const QString& command, const QStringList& words,
                           const QString& folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(command, words);
    if (!process.waitForStarted())
        return QStringLiteral("skipped");
    process.waitForFinished();
    return process.exitCode() == 0 ? QString() : QString::fromUtf8(process.readAll());
}

/// What is wrong with the JSON documents in `files` by the schema of this name in docs; with
/// `isByLine` each line is a document. Null when nothing is; "skipped" where there is no validator.
inline QString schemaComplaint(const QString& schema, const QStringList& files, bool isByLine)
{
    static const QString validator = QStringLiteral(R"(import sys
try:
    import json, jsonschema
except ImportError:
    sys.exit("skipped")
schema, by_line, *files = sys.argv[1:]
validator = jsonschema.Draft202012Validator(json.load(open(schema)))
for name in files:
    text = open(name, encoding="utf-8").read()
    for document in text.splitlines() if by_line == "1" else [text]:
        validator.validate(json.loads(document))
)");
    const QString docs = qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + QStringLiteral("/docs/");
    const QString complaint = complaintOf(
        QStringLiteral("python3"),
        QStringList { QStringLiteral("-c"), validator, docs + schema, QString::number(isByLine) }
            + files);
    // A complaint shows the schema, in which the word may stand.
    return complaint.trimmed() == QStringLiteral("skipped") ? QStringLiteral("skipped") : complaint;
}

/// The same of a log in XML.
inline QString logComplaint(const QString& path)
{
    return complaintOf(
        QStringLiteral("xmllint"),
        { QStringLiteral("--noout"), QStringLiteral("--schema"),
          qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + QStringLiteral("/docs/log.xsd"), path });
}

} // namespace pagestack
