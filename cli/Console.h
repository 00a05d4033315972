#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstdio>

#include <mutex>

namespace pagestack {

/// Writes all of `bytes`, also to a stream that another program has set not to wait for its reader.
/// Returns 0 or the number of the error.
int writeAll(int fileDescriptor, QByteArrayView bytes);

/// The two output streams of the program and the progress line between them. Any thread.
///
/// After an error a stream is not written to any more; the run goes on without it. Control
/// characters (of file names) are shown as '?'.
class Console
{
public:
    /// Both are borrowed.
    explicit Console(std::FILE* output = stdout, std::FILE* errors = stderr);

    /// A line on standard output.
    void result(const QString& line);
    /// Text as it is on standard output.
    void print(const QString& text);
    /// Bytes on standard output. Returns 0 or the number of the error.
    int putBytes(QByteArrayView bytes);
    /// A line on standard error, after the program's name.
    void trouble(const QString& line);

    /// Replaces the progress line. Where standard error is no terminal, every text is a line.
    void showProgress(const QString& text);
    void clearProgress();

    /// Whether something could not be written.
    bool isBroken();

    bool isTerminal() const { return m_isTerminal; }

private:
    struct Stream
    {
        std::FILE* file;
        bool isBroken = false;
    };

    void clearLine();
    void write(Stream& stream, const QString& text);

    std::mutex m_mutex; ///< guards what follows
    Stream m_output;
    Stream m_errors;
    bool m_isTerminal;
    qsizetype m_progressWidth = 0; ///< of the progress line that is on the terminal
};

} // namespace pagestack
