#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Texts on a terminal: what may be printed, how wide it is, columns.
/// All functions: any thread, pure. Widths are in columns of a terminal.
namespace TextLayout
{

enum class Align : quint8 { Left, Right };

/// One line of text as people see it: control characters and direction marks left out, line ends
/// as spaces. Names come from files and databases, so they could otherwise steer the terminal.
[[nodiscard]] QString printable(const QString& text);

/// The same, line ends and tabs kept.
[[nodiscard]] QString printableLines(const QString& text);

/// The text with every character escaped that would steer a terminal or end a line: "\n", "\t",
/// "\x1b", "\u2028". For paths and arguments, of which each character counts.
[[nodiscard]] QString escaped(const QString& text);

/// The text as one word of a shell's command line: in single quotes, or, where a character would
/// steer a terminal or end a line, in the form $'…' with such characters escaped.
[[nodiscard]] QString shellQuoted(const QString& text);

/// Whether the character is invisible and steers the direction of text (Unicode Standard Annex #9:
/// marks, embeddings, overrides and isolates).
[[nodiscard]] bool isDirectionMark(char32_t character);

/// Columns the text takes: two for East Asian wide characters and emoji, none for combining marks.
[[nodiscard]] int displayWidth(const QString& text);

/// The text cut to `columns`, an ellipsis in place of what is cut.
[[nodiscard]] QString elided(const QString& text, int columns);

/// Rows of equal numbers of cells in columns two spaces apart; `alignments` has one entry a column.
/// No line ends in a space; every line ends in a line end.
[[nodiscard]] QString table(const QList<QStringList>& rows, const QList<Align>& alignments);

/// Bytes as "11.07 MB"; a megabyte is 1,048,576 bytes.
[[nodiscard]] QString megabytes(qint64 bytes);

} // namespace TextLayout
