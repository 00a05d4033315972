#include "engine/fleet/PlanFile.h"

#include "engine/support/Info.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int formatNumber = 1;

    [[noreturn]] void refuse(const QString& why) { throw std::runtime_error(why.toStdString()); }

    QJsonObject optionMembers(const ConversionOptions& options)
    {
        QJsonObject members;
        for (const ConversionOptionRow& row : conversionOptionTable())
            members[row.name] = row.text(options, row);
        return members;
    }

    QString sha256(const QByteArray& bytes)
    {
        return QString::fromLatin1(
            QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    }

    qint64 numberIn(const QJsonObject& members, const QString& name)
    {
        const QJsonValue value = members.value(name);
        if (!value.isDouble())
            refuse(u"it has no number '%1'"_s.arg(name));
        return value.toInteger();
    }

    QString textIn(const QJsonObject& members, const QString& name)
    {
        const QJsonValue value = members.value(name);
        if (!value.isString())
            refuse(u"it has no text '%1'"_s.arg(name));
        return value.toString();
    }

    /// Those that are there.
    void addText(QJsonObject& members, const QString& name, const QString& text)
    {
        if (!text.isEmpty())
            members[name] = text;
    }

    /// The last line of the file, which says how a plan ends.
    PlanEnd readEnd(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            refuse(u"%1: %2"_s.arg(path, file.errorString()));
        qint64 start = file.size();
        QByteArray tail;
        constexpr qint64 step = 65536;
        while (start > 0 && tail.lastIndexOf('\n', -2) < 0) {
            const qint64 from = std::max(start - step, qint64 { 0 });
            file.seek(from);
            tail = file.read(start - from) + tail;
            start = from;
            if (tail.size() > JsonLines::mostBytes)
                break;
        }
        const QByteArray line = tail.mid(tail.lastIndexOf('\n', -2) + 1);
        const QJsonObject members = QJsonDocument::fromJson(line).object();
        if (!line.endsWith('\n') || members.value(u"type") != u"end"_s)
            refuse(u"%1: it is no plan, or one that is cut off"_s.arg(path));
        PlanEnd end { .sources = numberIn(members, u"sources"_s),
                      .pages = numberIn(members, u"pages"_s),
                      .targets = numberIn(members, u"targets"_s),
                      .unreadable = numberIn(members, u"unreadable"_s),
                      .identity = textIn(members, u"sha256"_s) };
        for (const QJsonValue place : members.value(u"index").toArray())
            end.index.emplace_back(place[0].toInteger(), place[1].toInteger());
        return end;
    }

} // namespace

QString PlanHead::digest() const
{
    return sha256(QJsonDocument({ { u"options"_s, optionMembers(options) },
                                  { u"outputFolder"_s, outputFolder },
                                  { u"existingFiles"_s, existingFiles } })
                      .toJson(QJsonDocument::Compact));
}

QJsonObject PlanHead::toJson() const
{
    return { { u"type"_s, u"plan"_s },
             { u"format"_s, formatNumber },
             { u"program"_s, u"Pagestack "_s + version.toString() },
             { u"options"_s, optionMembers(options) },
             { u"outputFolder"_s, outputFolder },
             { u"existingFiles"_s, existingFiles },
             { u"digest"_s, digest() } };
}

PlanHead PlanHead::fromJson(const QJsonObject& members)
{
    if (members.value(u"type") != u"plan"_s || members.value(u"format") != formatNumber)
        refuse(u"it is no plan of format %1"_s.arg(formatNumber));
    PlanHead head { .options = {},
                    .outputFolder = textIn(members, u"outputFolder"_s),
                    .existingFiles = textIn(members, u"existingFiles"_s) };
    const QJsonObject options = members.value(u"options").toObject();
    for (const ConversionOptionRow& row : conversionOptionTable()) {
        const QString text = textIn(options, row.name);
        if (text != row.text(head.options, row))
            row.set(head.options, row, text);
    }
    if (head.digest() != textIn(members, u"digest"_s))
        refuse(u"its options are not those that it was made with"_s);
    return head;
}

QJsonObject PlanSource::toJson(const QString& optionsDigest) const
{
    QJsonObject members { { u"type"_s, u"source"_s },
                          { u"line"_s, line },
                          { u"path"_s, path },
                          { u"shown"_s, shown },
                          { u"size"_s, sizeBytes },
                          { u"modified"_s, modifiedNs },
                          { u"pages"_s, pages },
                          { u"pageCount"_s, pageCount },
                          { u"pagesCounted"_s, pagesCounted },
                          { u"running"_s, running },
                          { u"targets"_s, QJsonArray::fromStringList(targets) },
                          { u"options"_s, optionsDigest } };
    addText(members, u"foundIn"_s, foundIn);
    addText(members, u"subfolder"_s, subfolder);
    addText(members, u"fault"_s, fault);
    return members;
}

PlanSource PlanSource::fromJson(const QJsonObject& members)
{
    PlanSource source { .line = numberIn(members, u"line"_s),
                        .path = textIn(members, u"path"_s),
                        .shown = textIn(members, u"shown"_s),
                        .foundIn = members.value(u"foundIn").toString(),
                        .sizeBytes = numberIn(members, u"size"_s),
                        .modifiedNs = numberIn(members, u"modified"_s),
                        .pages = textIn(members, u"pages"_s),
                        .pageCount = static_cast<int>(numberIn(members, u"pageCount"_s)),
                        .pagesCounted = static_cast<int>(numberIn(members, u"pagesCounted"_s)),
                        .running = static_cast<int>(numberIn(members, u"running"_s)),
                        .subfolder = members.value(u"subfolder").toString(),
                        .targets = {},
                        .fault = members.value(u"fault").toString() };
    for (const QJsonValue target : members.value(u"targets").toArray())
        source.targets.append(target.toString());
    if (source.pageCount < 0 || !source.path.startsWith(u'/'))
        refuse(u"it has no sound path or pages"_s);
    return source;
}

QString pageRangesText(const QList<int>& pages)
{
    QStringList parts;
    for (qsizetype i = 0; i < pages.size();) {
        qsizetype last = i;
        while (last + 1 < pages.size() && pages.at(last + 1) == pages.at(last) + 1)
            ++last;
        const QString first = QString::number(pages.at(i));
        parts.append(last == i ? first : first + u'-' + QString::number(pages.at(last)));
        i = last + 1;
    }
    return parts.join(u',');
}

PlanWriter::PlanWriter(const PlanHead& head, Put put)
    : m_digest(head.digest())
    , m_put(std::move(put))
{
    this->put(head.toJson());
}

void PlanWriter::put(const QJsonObject& members)
{
    const QByteArray line = jsonLine(members);
    m_hash.addData(line);
    m_offset += line.size();
    m_put(line);
}

void PlanWriter::add(const PlanSource& source)
{
    if (m_end.sources % PlanEnd::indexStep == 0)
        m_end.index.emplace_back(m_offset, m_end.pages);
    ++m_end.sources;
    m_end.pages += source.pageCount;
    m_end.targets += source.targets.size();
    m_end.unreadable += source.pagesCounted == 0 ? 1 : 0;
    put(source.toJson(m_digest));
}

void PlanWriter::finish()
{
    m_end.identity = QString::fromLatin1(m_hash.result().toHex());
    QJsonArray index;
    for (const auto& [offset, pages] : m_end.index)
        index.append(QJsonArray { offset, pages });
    m_put(jsonLine({ { u"type"_s, u"end"_s },
                     { u"sources"_s, m_end.sources },
                     { u"pages"_s, m_end.pages },
                     { u"targets"_s, m_end.targets },
                     { u"unreadable"_s, m_end.unreadable },
                     { u"sha256"_s, m_end.identity },
                     { u"indexStep"_s, PlanEnd::indexStep },
                     { u"index"_s, index } }));
}

PlanReader::PlanReader(const QString& path)
    : m_path(path)
    , m_end(readEnd(path))
    , m_lines(path)
{
    try {
        m_head = PlanHead::fromJson(m_lines.next().value_or(QJsonObject()));
    } catch (const std::runtime_error& error) {
        refuse(u"%1: %2"_s.arg(path, QString::fromUtf8(error.what())));
    }
}

std::optional<PlanSource> PlanReader::next()
{
    if (m_next == m_end.sources)
        return std::nullopt;
    try {
        const PlanSource source = PlanSource::fromJson(m_lines.next().value_or(QJsonObject()));
        if (source.line != m_next)
            refuse(u"it is that of source %1"_s.arg(source.line));
        ++m_next;
        m_pagesBefore += source.pageCount;
        return source;
    } catch (const std::runtime_error& error) {
        refuse(u"%1: the line of source %2: %3"_s.arg(m_path).arg(m_next).arg(
            QString::fromUtf8(error.what())));
    }
}

void PlanReader::skipTo(qint64 pages)
{
    // Of places with the same pages before them the first: sources without pages are between.
    const auto behind
        = std::ranges::lower_bound(m_end.index, pages, {}, &std::pair<qint64, qint64>::second);
    if (behind == m_end.index.begin())
        return;
    const auto place = behind - 1;
    m_next = (place - m_end.index.begin()) * PlanEnd::indexStep;
    m_pagesBefore = place->second;
    m_lines.seek(place->first);
}

} // namespace pagestack
