#pragma once

#include <QEvent>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <cstdint>

#include "plantjobs.h"
#include "rxobject.h"
#include "seriesjob.h"

class CChnMapAnalog;
class CCmtdChildFrame;

// The argument of jobs 3 to 9: a virtual channel to fill from its source. The worker frees it.
struct VirtualChannelJob
{
    SeriesJobParams params;
    CChnMapAnalog *target = nullptr;
    const CChnMapAnalog *source = nullptr;
};

// The argument of job 13: the impedance traces of `object` between samples lo and hi. The form
// that asks owns it and must not touch the object until the job has ended; the worker sets
// `complete` when the whole range was computed (not stopped).
struct RxTraceJob
{
    RxObject *object = nullptr;
    int lo = 0;
    int hi = 0;
    bool complete = false;
};

// The arguments of jobs 10 to 12: the curves of a plant unit with the channels made for them.
// The worker frees them.
struct UfCurveJob
{
    UfJobParams params;
    CChnMapAnalog *target = nullptr;
};

struct PowerCurveJob
{
    PowerJobParams params;
    PowerJobChannels channels;
};

struct LoadAngleCurveJob
{
    LoadAngleJobParams params;
    CChnMapAnalog *target = nullptr;
};

// Progress of a job, posted from the worker to its frame. Event type 1000; `code` is the
// report code (1 started, 2 ended with the job's kind in `a`, 3 repaint, 9 range, 10 progress, 11 increment).
class CCmtdEventProgress : public QEvent
{
public:
    static constexpr QEvent::Type kType = static_cast<QEvent::Type>(1000);
    CCmtdEventProgress(int code, int a, int b) : QEvent(kType), code(code), a(a), b(b) {}

    int32_t code;
    int32_t a;
    int32_t b;
};

// The single channel from a job to the GUI thread, a plain function so that the recording's
// code knows nothing of the frame: 0 asks whether to stop (-1 when cancelled), 8 starts a
// range and returns the step of about a hundredth of it, the others post an event.
int CmtdWorkerReport(void *owner, int code, int a, int b);
// Step of a range from a to b: a hundredth of it, at least 1.
int CmtdReportStep(int total, int start);

// The worker of one document frame: one job slot, no queue. Reading the data file and
// computing derived series run here; the GUI stays usable and the waves appear while the
// file is read. A job is given by storing its argument and kind and releasing `wakeup`; a
// job given while the slot is full is dropped.
class CCmtdThread : public QThread
{
public:
    enum Kind
    {
        KindNone = 0,
        KindQuit = 1,
        KindLoad = 2,
        KindRxTrace = 13
    };

    explicit CCmtdThread(CCmtdChildFrame *owner);
    ~CCmtdThread() override;

    // Stores a job; false (and nothing stored) when the slot is taken.
    bool submit(int kind, void *argument = nullptr);
    // Tells the thread to end after its current job, whatever the slot holds.
    void requestQuit();
    int pendingKind() const { return kind.load(std::memory_order_acquire); }

    CCmtdChildFrame *owner;
    int (*report)(void *, int, int, int) = CmtdWorkerReport;
    std::atomic<int> kind{0};
    std::atomic<void *> arg{nullptr};
    QSemaphore wakeup{0};

protected:
    void run() override;

private:
    void runJob(int job, void *argument);
    // Jobs 10 to 12; false for another kind.
    bool runPlantJob(int job, void *argument);
};
