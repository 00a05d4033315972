#include "engine/image/metadata/XmpPacket.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QSet>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// Where the text of the packet ends and padding begins, and where that ends; -1 if there is no
    /// end mark.
    struct PacketEnd
    {
        qsizetype text = -1;
        qsizetype mark = -1;
    };

    PacketEnd endOf(const QByteArray& packet)
    {
        PacketEnd end;
        end.mark = packet.lastIndexOf("<?xpacket end");
        end.text = end.mark;
        while (end.text > 0 && QByteArrayView(" \t\r\n").contains(packet.at(end.text - 1)))
            --end.text;
        return end;
    }

    /// The packet without its wrapper, which extended XMP does not have.
    QByteArray unwrapped(const QByteArray& packet)
    {
        const qsizetype end = endOf(packet).text;
        QByteArray text = end < 0 ? packet : packet.first(end);
        if (const qsizetype begin = text.indexOf("<?xpacket begin"); begin >= 0)
            if (const qsizetype close = text.indexOf("?>", begin); close >= 0)
                text.remove(0, close + 2);
        return text.trimmed();
    }

    QByteArray packetNaming(const QByteArray& digest)
    {
        return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
               "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
               "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
               "<rdf:Description rdf:about=\"\" xmlns:xmpNote=\"http://ns.adobe.com/xmp/note/\" "
               "xmpNote:HasExtendedXMP=\""
            + digest + "\"/></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>";
    }

} // namespace

QByteArray uprightXmp(QByteArray packet)
{
    // One byte a character, so that places are those of the packet.
    const QString text = QString::fromLatin1(packet);
    static const QRegularExpression space(
        uR"(xmlns:([\w.-]++)\s*+=\s*+["']http://ns\.adobe\.com/tiff/1\.0/["'])"_s);
    static const QRegularExpression orientation(
        uR"((?<![\w.-])([\w.-]++):Orientation\s*+(?:=\s*+["']|>)\s*+([1-8])(?=\s*+["'<]))"_s);
    QSet<QString> names;
    for (auto found = space.globalMatch(text); found.hasNext();)
        names.insert(found.next().captured(1));
    if (names.isEmpty())
        return packet;
    for (auto found = orientation.globalMatch(text); found.hasNext();)
        if (const auto value = found.next(); names.contains(value.captured(1)))
            packet[value.capturedStart(2)] = '1';
    return packet;
}

QByteArray withoutPadding(const QByteArray& packet)
{
    const PacketEnd end = endOf(packet);
    return end.mark < 0 ? packet : packet.first(end.text) + '\n' + packet.mid(end.mark);
}

XmpParts xmpParts(const QByteArray& packet, qsizetype mostBytes)
{
    if (packet.size() <= mostBytes)
        return { packet, {}, {} };
    const QByteArray extended = unwrapped(packet);
    const QByteArray digest
        = QCryptographicHash::hash(extended, QCryptographicHash::Md5).toHex().toUpper();
    return { packetNaming(digest), extended, digest };
}

} // namespace pagestack
