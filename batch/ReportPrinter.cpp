#include "batch/ReportPrinter.h"

#include "platform/json/JsonText.h"
#include "platform/process/StandardOutput.h"
#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QFile>

#include <algorithm>
#include <unistd.h>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Status = FileReport::Status;

constexpr int kFound = 1;
constexpr int kFailed = 2;

bool usesColor(BatchOptions::Color color)
{
    if (color == BatchOptions::Color::Auto)
        return isatty(STDOUT_FILENO) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR") &&
               qgetenv("TERM") != "dumb";
    return color == BatchOptions::Color::Always;
}

bool isFinding(const MacroNotification &notification)
{
    return notification.type == NotificationType::Warning ||
           notification.type == NotificationType::Error;
}

QString typeName(NotificationType type)
{
    switch (type) {
    case NotificationType::Success:
        return u"success"_s;
    case NotificationType::Warning:
        return u"warning"_s;
    case NotificationType::Error:
        return u"error"_s;
    case NotificationType::Info:
        break;
    }
    return u"info"_s;
}

QString statusName(Status status)
{
    switch (status) {
    case Status::Changed:
        return u"changed"_s;
    case Status::Failed:
        return u"failed"_s;
    case Status::Skipped:
        return u"skipped"_s;
    case Status::Unchanged:
    case Status::Interrupted:
        break;
    }
    return u"unchanged"_s;
}

QString statusKey(Status status)
{
    switch (status) {
    case Status::Changed:
        return u"batch.status.changed"_s;
    case Status::Skipped:
        return u"batch.status.skipped"_s;
    default:
        return u"batch.status.unchanged"_s;
    }
}

/// The name for messages.
QString shownName(const BatchInput &input)
{
    if (input.isStandardInput)
        return wording::text(u"batch.standardInput"_s);
    return cutText(QFile::decodeName(input.name), kLongestShown);
}

/// Puts the name before each line, since a line without it would look like one of another input.
void writeMessage(const QString &name, const QString &message)
{
    for (const QStringView line : QStringView(message).tokenize(u'\n'))
        writeWholeErrorLine(name + u": "_s + line.toString());
}

/// The message with the place in the macro, if it is known.
QString messageOf(const BatchFailure &failure)
{
    if (failure.line == 0)
        return failure.message;
    QString place = failure.macro + u':' + QString::number(failure.line);
    if (failure.column > 0)
        place += u':' + QString::number(failure.column);
    return failure.message + u" ("_s + place + u')';
}

JsonValue jsonOf(const BatchFailure &failure)
{
    JsonObject object{{u"code"_s, QString(failure.code)}, {u"message"_s, failure.message}};
    if (!failure.macro.isEmpty())
        object[u"macro"_s] = failure.macro;
    if (failure.line > 0)
        object[u"line"_s] = failure.line;
    if (failure.column > 0)
        object[u"column"_s] = failure.column;
    return object;
}

tl::expected<void, FileError> writeText(const Text &text)
{
    constexpr qsizetype kPortion = qsizetype{1} << 18; // The text's blocks are small.
    tl::expected<void, FileError> written;
    QByteArray portion;
    text.forEachUtf8Block([&](QByteArrayView block) {
        portion.append(block);
        if (portion.size() >= kPortion) {
            written = writeStandardOutput(portion);
            portion.truncate(0);
        }
        return written.has_value();
    });
    return written ? writeStandardOutput(portion) : written;
}

double milliseconds(std::chrono::microseconds duration)
{
    return static_cast<double>(duration.count()) / 1000;
}

JsonValue jsonOf(const FileReport &report)
{
    JsonArray notifications;
    for (const MacroNotification &notification : report.notifications)
        notifications.append(JsonObject{{u"type"_s, typeName(notification.type)},
                                        {u"message"_s, notification.message}});
    JsonObject object{{u"path"_s, QFile::decodeName(report.input.name)},
                      {u"status"_s, statusName(report.status)},
                      {u"changed"_s, report.status == Status::Changed},
                      {u"edits"_s, report.edits},
                      {u"notifications"_s, notifications},
                      {u"milliseconds"_s, milliseconds(report.times.total())}};
    if (report.failure)
        object[u"error"_s] = jsonOf(*report.failure);
    return object;
}

/// The escape sequence for a line of a diff; empty for a line without one.
/// \param number of the line, 0-based; the first two are the header.
QByteArray colorOf(const QByteArray &line, int number)
{
    constexpr int kHeaderLines = 2;
    if (number < kHeaderLines)
        return "\x1b[1m";
    if (line.startsWith('-'))
        return "\x1b[31m";
    if (line.startsWith('+'))
        return "\x1b[32m";
    return line.startsWith('@') ? "\x1b[36m" : "";
}

QByteArray coloredDiff(const QByteArray &diff)
{
    QByteArray colored;
    const QByteArrayList lines = diff.split('\n');
    for (int number = 0; number < lines.size() - 1; ++number) { // The last is empty.
        const QByteArray color = colorOf(lines.at(number), number);
        colored += color + lines.at(number) + (color.isEmpty() ? "\n" : "\x1b[m\n");
    }
    return colored;
}

QString seconds(std::chrono::microseconds duration)
{
    return QString::number(milliseconds(duration) / 1000, 'f', 2);
}

} // namespace

ReportPrinter::ReportPrinter(const BatchOptions &options)
    : m_options(options)
    , m_usesColor(usesColor(options.color))
{
}

tl::expected<void, FileError> ReportPrinter::print(const FileReport &report)
{
    count(report);
    printMessages(report);
    return printResult(report);
}

void ReportPrinter::count(const FileReport &report)
{
    switch (report.status) {
    case Status::Changed:
        ++m_changed;
        break;
    case Status::Unchanged:
        ++m_unchanged;
        break;
    case Status::Skipped:
        ++m_skipped;
        break;
    case Status::Failed:
        ++m_failed;
        break;
    case Status::Interrupted:
        return;
    }
    m_times += report.times;
    const auto &notifications = report.notifications;
    m_hasFinding =
        m_hasFinding || std::any_of(notifications.begin(), notifications.end(), isFinding);
}

void ReportPrinter::printMessages(const FileReport &report) const
{
    using Verbosity = BatchOptions::Verbosity;
    const QString name = shownName(report.input);
    for (const QString &text : report.log)
        writeMessage(name, text);
    if (m_options.verbosity != Verbosity::Quiet)
        printNotifications(report);
    if (report.failure && report.status == Status::Failed)
        writeMessage(name, messageOf(*report.failure));
    if (m_options.verbosity == Verbosity::Verbose && report.status != Status::Failed) {
        writeWholeErrorLine(
            wording::text(u"batch.fileDone"_s,
                          {name,
                           wording::text(statusKey(report.status)),
                           QString::number(report.edits),
                           QString::number(milliseconds(report.times.total()), 'f', 1)}));
    }
}

void ReportPrinter::printNotifications(const FileReport &report) const
{
    const bool isVerbose = m_options.verbosity == BatchOptions::Verbosity::Verbose;
    for (const MacroNotification &notification : report.notifications)
        if (isVerbose || isFinding(notification))
            writeMessage(shownName(report.input), notification.message);
}

tl::expected<void, FileError> ReportPrinter::printResult(const FileReport &report) const
{
    const bool isDone = report.status == Status::Changed || report.status == Status::Unchanged;
    if (isDone && (m_options.writesText() || m_options.outputFile == "-"))
        return writeText(report.result);
    const QByteArray output = outputOf(report);
    return output.isEmpty() ? tl::expected<void, FileError>() : writeStandardOutput(output);
}

QByteArray ReportPrinter::outputOf(const FileReport &report) const
{
    if (report.status == Status::Interrupted)
        return {};
    if (m_options.json)
        return JsonText::writeLine(jsonOf(report)) + '\n';
    if (report.status != Status::Changed)
        return {};
    if (m_options.diff)
        return m_usesColor ? coloredDiff(report.diff) : report.diff;
    const bool isQuiet = m_options.verbosity == BatchOptions::Verbosity::Quiet;
    if (m_options.names || (m_options.check && !isQuiet))
        return report.input.name + m_options.nameEnd;
    return {};
}

void ReportPrinter::printSummary()
{
    using Verbosity = BatchOptions::Verbosity;
    if (m_skipped > 0 && m_options.verbosity != Verbosity::Quiet)
        writeWholeErrorLine(wording::text(u"batch.skipped"_s, {QString::number(m_skipped)}));
    if (m_options.verbosity != Verbosity::Verbose)
        return;
    writeWholeErrorLine(wording::text(u"batch.summary"_s,
                                      {QString::number(m_changed),
                                       QString::number(m_unchanged),
                                       QString::number(m_failed),
                                       QString::number(m_skipped)}));
    const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - m_start);
    writeWholeErrorLine(wording::text(u"batch.times"_s,
                                      {seconds(elapsed),
                                       seconds(m_times.reading),
                                       seconds(m_times.macros),
                                       seconds(m_times.writing)}));
}

int ReportPrinter::exitStatus() const
{
    if (m_failed > 0)
        return kFailed;
    const bool wouldChange = m_options.check && m_changed > 0;
    return wouldChange || (m_options.strict && m_hasFinding) ? kFound : 0;
}

} // namespace penwick
