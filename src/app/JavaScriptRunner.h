#pragma once

#include <QJSValue>
#include <QString>

/// Runs in-process scripts: JavaScript in a fresh QJSEngine on the calling (main) thread,
/// with the scripting object model as the global `application`. A watchdog thread
/// interrupts a script that runs longer than the time limit, so that no script can freeze
/// the editor for ever.
class JavaScriptRunner
{
public:
    enum class Outcome {
        Ran,          ///< ran to its end, or stopped with an error while running
        CompileError, ///< did not compile; nothing ran
        Interrupted,  ///< stopped at the time limit
    };
    struct Result {
        Outcome outcome = Outcome::Ran;
        int errorNumber = 0; ///< the line of a compile error
        QString errorMessage;
        /// "<number> error\n<message>", the text of the compile-error alerts.
        QString errorText() const;
    };

    static constexpr int DefaultTimeLimit = 10000;

    /// Runs `source`; `fileName` names it in error messages.
    static Result run(const QString& source, const QString& fileName = QString());
    /// The time limit in milliseconds (the tests shorten it).
    static int timeLimit();
    static void setTimeLimit(int milliseconds);

    /// Throws an error of `type` into the script that is running, when one is: the object
    /// model refuses a change this way. False when no script runs.
    static bool throwError(QJSValue::ErrorType type, const QString& message);
};
