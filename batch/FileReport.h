#pragma once

#include "batch/BatchInputs.h"
#include "macro/engine/MacroResult.h"
#include "text/Text.h"

#include <QByteArray>
#include <QLatin1StringView>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace penwick {

/// Why an input failed.
struct BatchFailure
{
    QLatin1StringView code; ///< An English word that stays the same in all wordings.
    QString message;        ///< For the user, in the active wording.
    QString macro = {};     ///< The name of the macro that failed; empty if none did.
    int line = 0;           ///< Of the macro's code, 1-based; 0 when unknown.
    int column = 0;         ///< In UTF-16 code units, 1-based; 0 when unknown.
};

/// How long the steps of the work on an input took.
struct StepTimes
{
    std::chrono::microseconds reading{0};
    std::chrono::microseconds macros{0};
    std::chrono::microseconds writing{0};

    [[nodiscard]] std::chrono::microseconds total() const { return reading + macros + writing; }

    StepTimes &operator+=(const StepTimes &other)
    {
        reading += other.reading;
        macros += other.macros;
        writing += other.writing;
        return *this;
    }
};

/// What became of one input.
struct FileReport
{
    enum class Status {
        Unchanged,
        Changed,     ///< The result differs from the input. It is written if the options say so.
        Failed,      ///< Nothing was written.
        Skipped,     ///< It is not UTF-8, and such files are to be skipped.
        Interrupted, ///< The program is to end; nothing was written.
    };

    BatchInput input = {};
    Status status = Status::Unchanged;
    qint64 edits = 0;
    QList<MacroNotification> notifications = {};
    QStringList log = {}; ///< What the macros passed to `console.log`.
    std::optional<BatchFailure> failure = std::nullopt;
    Text result = {};     ///< Set if the options ask for the text on standard output.
    QByteArray diff = {}; ///< Set if the options ask for it.
    StepTimes times = {};
};

} // namespace penwick
