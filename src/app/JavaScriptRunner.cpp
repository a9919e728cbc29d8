#include "app/JavaScriptRunner.h"

#include "app/ScriptingApplication.h"

#include <QJSEngine>
#include <QJSValue>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace {

// The engine of the script that is running, so that the object model can throw into it.
QJSEngine* runningEngine = nullptr;

int& limit()
{
    static int milliseconds = JavaScriptRunner::DefaultTimeLimit;
    return milliseconds;
}

/// Interrupts the engine when the script has not ended in time.
class Watchdog
{
public:
    Watchdog(QJSEngine& engine, int milliseconds)
        : _thread([this, &engine, milliseconds] {
            std::unique_lock lock(_mutex);
            if (!_condition.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                     [this] { return _done; })) {
                _fired = true;
                engine.setInterrupted(true);
            }
        })
    {}
    ~Watchdog()
    {
        {
            std::lock_guard lock(_mutex);
            _done = true;
        }
        _condition.notify_all();
        _thread.join();
    }
    bool fired()
    {
        std::lock_guard lock(_mutex);
        return _fired;
    }

private:
    std::mutex _mutex;
    std::condition_variable _condition;
    bool _done = false;
    bool _fired = false;
    std::thread _thread;
};

} // namespace

QString JavaScriptRunner::Result::errorText() const
{
    return QString::number(errorNumber) + QStringLiteral(" error\n") + errorMessage;
}

int JavaScriptRunner::timeLimit()
{
    return limit();
}

void JavaScriptRunner::setTimeLimit(int milliseconds)
{
    limit() = milliseconds;
}

bool JavaScriptRunner::throwError(QJSValue::ErrorType type, const QString& message)
{
    if (!runningEngine) {
        return false;
    }
    runningEngine->throwError(type, message);
    return true;
}

JavaScriptRunner::Result JavaScriptRunner::run(const QString& source, const QString& fileName)
{
    QJSEngine engine;
    engine.installExtensions(QJSEngine::ConsoleExtension);
    ScriptingApplication application;
    engine.globalObject().setProperty(QStringLiteral("application"),
                                      engine.newQObject(&application));
    QJSEngine::setObjectOwnership(&application, QJSEngine::CppOwnership);

    // Compile first without running: the body inside a function that is never called,
    // starting on the same line so that line numbers agree.
    const QJSValue compiled = engine.evaluate(
        QStringLiteral("(function () {") + source + QStringLiteral("\n})"), fileName, 1);
    if (compiled.isError() && compiled.errorType() == QJSValue::SyntaxError) {
        Result result;
        result.outcome = Outcome::CompileError;
        result.errorNumber = compiled.property(QStringLiteral("lineNumber")).toInt();
        result.errorMessage = compiled.property(QStringLiteral("message")).toString();
        return result;
    }

    bool interrupted = false;
    {
        Watchdog watchdog(engine, limit());
        QJSEngine* const outer = std::exchange(runningEngine, &engine);
        engine.evaluate(source, fileName, 1);
        runningEngine = outer;
        interrupted = watchdog.fired();
    }
    engine.setInterrupted(false);
    Result result;
    result.outcome = interrupted ? Outcome::Interrupted : Outcome::Ran;
    return result;
}
