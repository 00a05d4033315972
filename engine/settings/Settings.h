#pragma once

#include <QDataStream>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>
#include <utility>

namespace pagestack {

class UserDefaults;

/// How a conversion writes its output. The front end owns the record; the conversion job and the
/// writers share it by reference.
///
/// Numbers are stored as they are set, no range is checked. Null and empty texts differ. Every
/// setter announces a change, and only a change, from the thread that sets.
///
/// There is no lock. The job reads the record on its own thread; that is safe only because a front
/// end leaves it alone from the start of a run to its end.
class Settings : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int outputType READ outputType WRITE setOutputType NOTIFY outputTypeChanged)
    Q_PROPERTY(bool isSetCurrentAsDefaultOutputFolderPath READ isSetCurrentAsDefaultOutputFolderPath
                   WRITE setIsSetCurrentAsDefaultOutputFolderPath NOTIFY
                       isSetCurrentAsDefaultOutputFolderPathChanged)
    Q_PROPERTY(bool isOpenFolderAfterConversion READ isOpenFolderAfterConversion WRITE
                   setIsOpenFolderAfterConversion NOTIFY isOpenFolderAfterConversionChanged)
    Q_PROPERTY(QString outputFolderPath READ outputFolderPath WRITE setOutputFolderPath NOTIFY
                   outputFolderPathChanged)
    Q_PROPERTY(QString separator READ separator WRITE setSeparator NOTIFY separatorChanged)
    Q_PROPERTY(int jpegQuality READ jpegQuality WRITE setJpegQuality NOTIFY jpegQualityChanged)
    Q_PROPERTY(int tiffCompressionIndex READ tiffCompressionIndex WRITE setTiffCompressionIndex
                   NOTIFY tiffCompressionIndexChanged)
    Q_PROPERTY(bool isSplitTIFFIntoSinglePages READ isSplitTIFFIntoSinglePages WRITE
                   setIsSplitTIFFIntoSinglePages NOTIFY isSplitTIFFIntoSinglePagesChanged)
    Q_PROPERTY(bool isClearProcessedFiles READ isClearProcessedFiles WRITE setIsClearProcessedFiles
                   NOTIFY isClearProcessedFilesChanged)

public:
    /// Keys and values in the order in which they are kept.
    using Pairs = QList<std::pair<QString, QVariant>>;

    /// Starts with the defaults and then takes over what `store` holds under "SETTINGS". The store
    /// is not owned and must outlive the record; null: nothing is read, and nothing is ever stored.
    explicit Settings(UserDefaults* store, QObject* parent = nullptr);

    /// Output format by its code, see OutputType. A code outside 0..4 selects no format.
    int outputType() const { return m_outputType; }
    void setOutputType(int code);

    /// Whether `outputFolderPath` is kept from one start of the program to the next.
    bool isSetCurrentAsDefaultOutputFolderPath() const
    {
        return m_isSetCurrentAsDefaultOutputFolderPath;
    }
    void setIsSetCurrentAsDefaultOutputFolderPath(bool isSet);

    bool isOpenFolderAfterConversion() const { return m_isOpenFolderAfterConversion; }
    void setIsOpenFolderAfterConversion(bool isOpen);

    /// Folder for the output files; empty or null: each goes beside its source.
    QString outputFolderPath() const { return m_outputFolderPath; }
    void setOutputFolderPath(const QString& path);

    /// Stands between a source's base name and the page number in output names.
    QString separator() const { return m_separator; }
    void setSeparator(const QString& text);

    /// In tenths: 10 is the best quality.
    int jpegQuality() const { return m_jpegQuality; }
    void setJpegQuality(int tenths);

    /// See TiffCompression; any other code means no compression.
    int tiffCompressionIndex() const { return m_tiffCompressionIndex; }
    void setTiffCompressionIndex(int index);

    /// For TIFF output only: one file a page instead of one a source.
    bool isSplitTIFFIntoSinglePages() const { return m_isSplitTIFFIntoSinglePages; }
    void setIsSplitTIFFIntoSinglePages(bool isSplit);

    /// Whether the ticked files leave the list when the result of a run is closed.
    bool isClearProcessedFiles() const { return m_isClearProcessedFiles; }
    void setIsClearProcessedFiles(bool isClear);

    /// The nine fields as they are persisted, each under its name. A null output folder becomes ""
    /// first, here and in the record. The list ends before the first null value: with a null
    /// separator it holds four pairs. Empty after an exception, which is logged.
    std::optional<Pairs> getData();

    /// Takes over a dictionary (QVariantMap) of the nine fields; anything else is ignored. A
    /// missing key counts as 0, false or a null text, a missing quality as the best. The output
    /// folder of an earlier run is kept only where `isSetCurrentAsDefaultOutputFolderPath` says so,
    /// and without a folder that flag becomes false. An exception (of an observer) is logged; the
    /// fields then stay as far as they were set.
    void setData(const QVariant& data);

    /// Stores the record and writes the store to disk. An exception is logged.
    void synchronize();

    /// Writes the nine fields as one keyed record, a CBOR map, whatever version and byte order the
    /// stream is set to. A failure shows in the status of the stream.
    void encodeWithCoder(QDataStream& coder) const;

    /// Takes over a keyed record just as it was written; a missing key counts as 0, false or a null
    /// text. False for a damaged stream, which may hold anything: the record is then as it was, and
    /// the stream's status is set.
    bool initWithCoder(QDataStream& coder);

signals:
    void outputTypeChanged(int code);
    void isSetCurrentAsDefaultOutputFolderPathChanged(bool isSet);
    void isOpenFolderAfterConversionChanged(bool isOpen);
    void outputFolderPathChanged(const QString& path);
    void separatorChanged(const QString& text);
    void jpegQualityChanged(int tenths);
    void tiffCompressionIndexChanged(int index);
    void isSplitTIFFIntoSinglePagesChanged(bool isSplit);
    void isClearProcessedFilesChanged(bool isClear);

private:
    static constexpr int bestJpegQuality = 10;

    /// Stores `value` and announces it by `changed` if that changes the field.
    template <typename Value, typename Argument>
    void change(Value& field, const Value& value, void (Settings::*changed)(Argument));
    void setFields(const QVariantMap& values);

    UserDefaults* m_store;
    int m_outputType = 0;
    bool m_isSetCurrentAsDefaultOutputFolderPath = true;
    bool m_isOpenFolderAfterConversion = true;
    QString m_outputFolderPath;
    QString m_separator;
    int m_jpegQuality = bestJpegQuality;
    int m_tiffCompressionIndex = 0;
    bool m_isSplitTIFFIntoSinglePages = false;
    bool m_isClearProcessedFiles = false;
};

} // namespace pagestack
