// SPDX-License-Identifier: MIT
#include "runtime/c/plcruntime.h"

#include "runtime/c/option_table.h"
#include "runtime/c/refusal.h"
#include "runtime/c/typed_values.h"
#include "runtime/cycle/runtime.h"
#include "runtime/host/driver_path.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/request_pieces.h"

#include <QDateTime>

#include <atomic>
#include <memory>

using namespace plc;

struct plcruntime_value {
    int state = PLCRUNTIME_NEVER_READ;
    int64_t ageMs = -1;
    int64_t timeMs = -1;
    int failure = PLCRUNTIME_NO_FAILURE;
    std::string failureText;
    TypedVariable what;
    std::vector<quint32> elements;
    std::vector<NumberPair> numbers;
    std::string text;
};

struct plcruntime_result {
    Failure failure;
    std::string failureText;
    std::unique_ptr<plcruntime_value> value;
};

struct plcruntime {
    struct Subscription {
        TypedVariable what;
        plcruntime_value_callback callback;
        void* context;
    };

    Settings settings;
    std::unique_ptr<Runtime> runtime;
    std::vector<Subscription> subscriptions; // does not change from the start on
    std::atomic<bool> started{false};
};

namespace
{

thread_local std::string lastError;
thread_local int callbacksRunning = 0; // on this thread

/// Makes a status of whatever ends \a call.
template <class Call>
int guarded(Call call) noexcept
try {
    return call();
} catch (const Refusal& refusal) {
    lastError = refusal.what();
    return refusal.status();
} catch (const std::exception& error) {
    lastError = error.what();
    return PLCRUNTIME_FAULT;
} catch (...) {
    lastError = "a fault in the library";
    return PLCRUNTIME_FAULT;
}

/// Makes Refusals of the words of a runtime.
template <class Call>
auto refusing(plcruntime_status status, Call call)
{
    try {
        return call();
    } catch (const std::runtime_error& error) {
        throw Refusal(status, QString::fromStdString(error.what()));
    }
}

/// A callback that throws ends the program: nobody could take it.
template <class Call>
void callBack(Call call) noexcept
{
    ++callbacksRunning;
    call();
    --callbacksRunning;
}

plcruntime& given(plcruntime* runtime)
{
    if (runtime == nullptr)
        throw Refusal(PLCRUNTIME_INVALID, QStringLiteral("the runtime is NULL"));
    return *runtime;
}

plcruntime& startedOne(plcruntime* runtime)
{
    if (!given(runtime).started)
        throw Refusal(PLCRUNTIME_WRONG_TIME,
                      QStringLiteral("the runtime is not started; call plcruntime_start()"));
    return *runtime;
}

plcruntime& freshOne(plcruntime* runtime)
{
    if (given(runtime).started)
        throw Refusal(PLCRUNTIME_WRONG_TIME, QStringLiteral("the runtime is started already"));
    return *runtime;
}

template <class Kind>
void needKind(int value, Kind least, Kind most, const char* what)
{
    if (value < least || value > most)
        throw Refusal(PLCRUNTIME_INVALID, QStringLiteral("%1 is no %2").arg(value).arg(QLatin1String(what)));
}

int failureOf(FailureKind kind)
{
    switch (kind) {
    case FailureKind::None:
        return PLCRUNTIME_NO_FAILURE;
    case FailureKind::Invalid:
        return PLCRUNTIME_REFUSED;
    case FailureKind::NotRunning:
        return PLCRUNTIME_NOT_RUNNING;
    case FailureKind::NotTried:
        return PLCRUNTIME_NOT_TRIED;
    case FailureKind::StationOff:
        return PLCRUNTIME_STATION_OFF;
    case FailureKind::NotTaken:
        return PLCRUNTIME_NOT_TAKEN;
    case FailureKind::Discarded:
        return PLCRUNTIME_DISCARDED;
    case FailureKind::Replaced:
        return PLCRUNTIME_REPLACED;
    case FailureKind::Purged:
        return PLCRUNTIME_PURGED;
    case FailureKind::NotConnected:
        return PLCRUNTIME_NOT_CONNECTED;
    case FailureKind::NoReply:
    case FailureKind::LateReply:
        return PLCRUNTIME_NO_REPLY;
    case FailureKind::Exception:
        return PLCRUNTIME_EXCEPTION;
    case FailureKind::Acknowledged:
        return PLCRUNTIME_ACKNOWLEDGED;
    case FailureKind::BadReply:
    case FailureKind::OtherUnit:
    case FailureKind::OtherFunction:
    case FailureKind::OtherNumber:
    case FailureKind::OtherElements:
    case FailureKind::NoProtocol:
    case FailureKind::OtherAddress:
    case FailureKind::OtherValue:
    case FailureKind::OtherQuantity:
    case FailureKind::OtherByteCount:
        return PLCRUNTIME_BAD_REPLY;
    case FailureKind::Closed:
    case FailureKind::ClosedAtOnce:
        return PLCRUNTIME_CLOSED;
    case FailureKind::Stopped:
        return PLCRUNTIME_STOPPED;
    case FailureKind::OutOfStep:
        return PLCRUNTIME_OUT_OF_STEP;
    case FailureKind::NotReported:
        return PLCRUNTIME_NOT_REPORTED;
    default:
        break;
    }
    return PLCRUNTIME_OTHER_FAILURE;
}

int stateOf(ValueState state)
{
    switch (state) {
    case ValueState::NeverRead:
        return PLCRUNTIME_NEVER_READ;
    case ValueState::StationOff:
        return PLCRUNTIME_OFF;
    case ValueState::Failed:
        return PLCRUNTIME_FAILED;
    case ValueState::Stale:
        return PLCRUNTIME_STALE;
    case ValueState::Unconfirmed:
        return PLCRUNTIME_UNCONFIRMED;
    case ValueState::Fresh:
        return PLCRUNTIME_FRESH;
    }
    return PLCRUNTIME_NEVER_READ;
}

std::unique_ptr<plcruntime_value> valueOf(const TypedVariable& what, const CyclicValue& value)
{
    auto made = std::make_unique<plcruntime_value>();
    made->state = stateOf(value.state);
    made->ageMs = value.ageMs;
    made->timeMs = value.readAtMs;
    made->failure = failureOf(value.failure.kind);
    made->failureText = failureWords(value.failure).toStdString();
    made->what = what;
    made->elements = value.values;
    made->numbers = numbersOf(what, value.values);
    made->text = textOf(what, value.values);
    return made;
}

/// \return what a read brought, just now
std::unique_ptr<plcruntime_value> valueOf(const TypedVariable& what, const std::vector<quint32>& elements)
{
    CyclicValue value;
    value.state = ValueState::Fresh;
    value.values = elements;
    value.ageMs = 0;
    value.readAtMs = QDateTime::currentMSecsSinceEpoch();
    return valueOf(what, value);
}

template <class Outcome>
plcruntime_result resultOf(const Outcome& outcome)
{
    plcruntime_result result;
    result.failure = outcome.failure;
    result.failureText = failureWords(outcome).toStdString();
    return result;
}

void tell(const plcruntime& runtime, int index, const CyclicValue& value)
{
    const plcruntime::Subscription& subscription = runtime.subscriptions[static_cast<std::size_t>(index)];
    if (subscription.callback == nullptr)
        return;
    const std::unique_ptr<plcruntime_value> made = valueOf(subscription.what, value);
    callBack([&] { subscription.callback(subscription.context, index, made.get()); });
}

int write(plcruntime& runtime, const Variable& variable, const std::vector<quint32>& elements,
          plcruntime_done_callback callback, void* context)
{
    const Variable resolved = withStation(variable, runtime.settings);
    const QString words = writeRefusal(resolved, elements, runtime.settings);
    if (!words.isEmpty())
        throw Refusal(PLCRUNTIME_INVALID, words);
    WriteDone done;
    if (callback != nullptr) {
        done = [callback, context](const WriteOutcome& outcome) {
            const plcruntime_result result = resultOf(outcome);
            callBack([&] { callback(context, &result); });
        };
    }
    runtime.runtime->write(resolved, elements, done);
    return PLCRUNTIME_OK;
}

int read(plcruntime& runtime, const TypedVariable& what, plcruntime_done_callback callback, void* context)
{
    const Variable resolved = withStation(what.variable, runtime.settings);
    const QString words = readRefusal(resolved, runtime.settings);
    if (!words.isEmpty())
        throw Refusal(PLCRUNTIME_INVALID, words);
    if (callback == nullptr)
        throw Refusal(PLCRUNTIME_INVALID,
                      QStringLiteral("nobody would be told of what is read: give a callback"));
    runtime.runtime->read(resolved, [what, callback, context](const ReadOutcome& outcome) {
        plcruntime_result result = resultOf(outcome);
        if (outcome.done)
            result.value = valueOf(what, outcome.values);
        callBack([&] { callback(context, &result); });
    });
    return PLCRUNTIME_OK;
}

int queued(const plcruntime& runtime, int station, int kind)
{
    int requests = 0;
    for (const StationReport& report : runtime.runtime->stations()) {
        if (station == -1 || report.station == station)
            requests += kind == PLCRUNTIME_WRITES ? report.writesWaiting : report.readsWaiting;
    }
    return requests;
}

} // namespace

const char* plcruntime_version(void)
{
    return PLCRUNTIME_VERSION;
}

const char* plcruntime_last_error(void)
{
    return lastError.c_str();
}

const char* plcruntime_failure_name(int failure)
{
    static const char* const names[] = {
        "none",      "refused",  "not running", "not tried",     "station off",  "not taken",
        "discarded", "replaced", "purged",      "not connected", "no reply",     "exception",
        "bad reply", "stopped",  "out of step", "not reported",  "acknowledged", "closed"};
    return failure >= PLCRUNTIME_NO_FAILURE && failure <= PLCRUNTIME_CLOSED ? names[failure] : "other";
}

const char* plcruntime_state_name(int state)
{
    static const char* const names[] = {"never read", "station off", "failed",
                                        "stale",      "unconfirmed", "fresh"};
    return state >= PLCRUNTIME_NEVER_READ && state <= PLCRUNTIME_FRESH ? names[state] : "unknown";
}

int plcruntime_open(const plcruntime_option* options, plcruntime** runtime)
{
    return guarded([&] {
        if (runtime == nullptr)
            throw Refusal(PLCRUNTIME_INVALID, QStringLiteral("there is no place for the runtime"));
        *runtime = nullptr;
        auto opened = std::make_unique<plcruntime>();
        opened->settings = settingsOf(options);
        *runtime = opened.release();
        return PLCRUNTIME_OK;
    });
}

int plcruntime_subscribe(plcruntime* runtime, const char* variable, const char* type,
                         plcruntime_value_callback callback, void* context)
{
    return guarded([&]() -> int {
        plcruntime& fresh = freshOne(runtime);
        const TypedVariable what = typedVariable(variable, type);
        const QString words = cyclicRefusal(withStation(what.variable, fresh.settings), fresh.settings);
        if (!words.isEmpty())
            throw Refusal(PLCRUNTIME_INVALID, words);
        fresh.subscriptions.push_back({what, callback, context});
        return static_cast<int>(fresh.subscriptions.size()) - 1;
    });
}

int plcruntime_start(plcruntime* runtime)
{
    return guarded([&] {
        plcruntime& fresh = freshOne(runtime);
        refusing(PLCRUNTIME_CANNOT_START, [&] {
            Settings settings = fresh.settings;
            if (settings.driverPath.isEmpty())
                settings.driverPath = findDriver();
            auto made = std::make_unique<Runtime>(settings);
            for (const plcruntime::Subscription& subscription : fresh.subscriptions)
                made->addCyclic(subscription.what.variable);
            made->setValueObserver(
                [&fresh](int index, const CyclicValue& value) { tell(fresh, index, value); });
            fresh.runtime = std::move(made);
            fresh.started = true; // callbacks may come before start() returns
            try {
                fresh.runtime->start();
            } catch (...) {
                fresh.started = false;
                fresh.runtime.reset();
                throw;
            }
        });
        return PLCRUNTIME_OK;
    });
}

int plcruntime_close(plcruntime* runtime)
{
    return guarded([&] {
        if (callbacksRunning > 0)
            throw Refusal(PLCRUNTIME_WRONG_TIME,
                          QStringLiteral("a callback must not close a runtime; do it when it has returned"));
        if (runtime != nullptr && runtime->runtime)
            runtime->runtime->stop(); // before the rest goes, which callbacks use
        delete runtime;
        return PLCRUNTIME_OK;
    });
}

int plcruntime_read(plcruntime* runtime, const char* variable, const char* type,
                    plcruntime_done_callback callback, void* context)
{
    return guarded(
        [&] { return read(startedOne(runtime), typedVariable(variable, type), callback, context); });
}

int plcruntime_write(plcruntime* runtime, const char* variable, const uint32_t* elements, size_t count,
                     plcruntime_done_callback callback, void* context)
{
    return guarded([&] {
        plcruntime& started = startedOne(runtime);
        if (elements == nullptr)
            throw Refusal(PLCRUNTIME_INVALID, QStringLiteral("there are no elements to write"));
        const std::vector<quint32> values(elements, elements + count);
        return write(started, typedVariable(variable, nullptr).variable, values, callback, context);
    });
}

int plcruntime_write_number(plcruntime* runtime, const char* variable, const char* type, double value,
                            plcruntime_done_callback callback, void* context)
{
    return guarded([&] {
        plcruntime& started = startedOne(runtime);
        const TypedVariable what = typedVariable(variable, type);
        return write(started, what.variable, elementsOfNumber(what, value), callback, context);
    });
}

int plcruntime_write_text(plcruntime* runtime, const char* variable, const char* text,
                          plcruntime_done_callback callback, void* context)
{
    return guarded([&] {
        plcruntime& started = startedOne(runtime);
        const TypedVariable what = typedVariable(variable, "text");
        return write(started, what.variable, elementsOfText(what, text), callback, context);
    });
}

int plcruntime_switch_station(plcruntime* runtime, int station, int on)
{
    return guarded([&] {
        plcruntime& started = startedOne(runtime);
        needKind(on, 0, 1, "switch; give 0 or 1");
        refusing(PLCRUNTIME_INVALID, [&] { started.runtime->setStation(station, on != 0); });
        return PLCRUNTIME_OK;
    });
}

int plcruntime_queued(plcruntime* runtime, int station, int kind)
{
    return guarded([&] {
        const plcruntime& started = startedOne(runtime);
        needKind(station, -1, lastStation, "station");
        needKind<int>(kind, PLCRUNTIME_WRITES, PLCRUNTIME_READS, "kind of request");
        return queued(started, station, kind);
    });
}

int plcruntime_is_connected(plcruntime* runtime)
{
    return guarded([&] { return startedOne(runtime).runtime->linkState().connected ? 1 : 0; });
}

int plcruntime_get(plcruntime* runtime, int variable, plcruntime_value** value)
{
    return guarded([&] {
        if (value == nullptr)
            throw Refusal(PLCRUNTIME_INVALID, QStringLiteral("there is no place for the value"));
        *value = nullptr;
        plcruntime& started = startedOne(runtime);
        needKind<int>(variable, 0, static_cast<int>(started.subscriptions.size()) - 1, "subscribed variable");
        const TypedVariable& what = started.subscriptions[static_cast<std::size_t>(variable)].what;
        *value = valueOf(what, started.runtime->value(variable)).release();
        return PLCRUNTIME_OK;
    });
}

void plcruntime_free_value(plcruntime_value* value)
{
    delete value;
}

int plcruntime_value_state(const plcruntime_value* value)
{
    return value->state;
}

int64_t plcruntime_value_age_ms(const plcruntime_value* value)
{
    return value->ageMs;
}

int64_t plcruntime_value_time_ms(const plcruntime_value* value)
{
    return value->timeMs;
}

int plcruntime_value_failure(const plcruntime_value* value)
{
    return value->failure;
}

const char* plcruntime_value_failure_text(const plcruntime_value* value)
{
    return value->failureText.c_str();
}

size_t plcruntime_value_elements(const plcruntime_value* value)
{
    return value->elements.size();
}

uint32_t plcruntime_value_element(const plcruntime_value* value, size_t index)
{
    return index < value->elements.size() ? value->elements[index] : 0;
}

size_t plcruntime_value_count(const plcruntime_value* value)
{
    return static_cast<size_t>(value->what.values);
}

double plcruntime_value_double(const plcruntime_value* value, size_t index)
{
    return index < value->numbers.size() ? value->numbers[index].real : 0;
}

int64_t plcruntime_value_int64(const plcruntime_value* value, size_t index)
{
    return index < value->numbers.size() ? value->numbers[index].whole : 0;
}

const char* plcruntime_value_text(const plcruntime_value* value)
{
    return value->text.c_str();
}

int plcruntime_result_failure(const plcruntime_result* result)
{
    return failureOf(result->failure.kind);
}

const char* plcruntime_result_failure_text(const plcruntime_result* result)
{
    return result->failureText.c_str();
}

int plcruntime_result_exception(const plcruntime_result* result)
{
    return result->failure.kind == FailureKind::Exception ? result->failure.exception : 0;
}

int plcruntime_result_unsent(const plcruntime_result* result)
{
    return isUnsent(result->failure.kind) ? 1 : 0;
}

const plcruntime_value* plcruntime_result_value(const plcruntime_result* result)
{
    return result->value.get();
}
