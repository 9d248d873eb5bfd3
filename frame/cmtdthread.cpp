#include "cmtdthread.h"

#include "cmtdchildframe.h"
#include "virtualchannel.h"

#include <QCoreApplication>

namespace {

void post(CCmtdChildFrame *frame, int code, int a, int b)
{
    QCoreApplication::postEvent(frame, new CCmtdEventProgress(code, a, b));
}

} // namespace

int CmtdReportStep(int total, int start)
{
    const int step = static_cast<int>((double(total) - double(start)) * 0.01 + 0.5);
    return step < 1 ? 1 : step;
}

int CmtdWorkerReport(void *owner, int code, int a, int b)
{
    auto *frame = static_cast<CCmtdChildFrame *>(owner);
    switch (code) {
    case 0:
        return frame->isCancelled() ? -1 : 0;
    case 8:
        post(frame, 9, a, b);
        return CmtdReportStep(a, b);
    case 10:
        // The samples up to here are final: sum them for the envelope drawing while they are
        // still in the cache. Only a load does; a derived channel's summary is made on the
        // interface thread when its job has ended, since the summaries are the views' own.
        if (frame->backgroundState() & CCmtdDocument::StateLoading)
            frame->document()->extendEnvelopes(b);
        post(frame, code, a, b);
        return 0;
    default:
        post(frame, code, a, b);
        return 0;
    }
}

CCmtdThread::CCmtdThread(CCmtdChildFrame *owner) : owner(owner) {}

CCmtdThread::~CCmtdThread()
{
    // The frame told the thread to end in its close event; wait for the job in hand.
    if (isRunning()) {
        requestQuit();
        wait();
    }
}

bool CCmtdThread::submit(int job, void *argument)
{
    if (kind.load(std::memory_order_acquire) != KindNone)
        return false;
    arg.store(argument, std::memory_order_relaxed); // the argument first: the worker reads it on waking
    kind.store(job, std::memory_order_release);
    wakeup.release();
    return true;
}

void CCmtdThread::requestQuit()
{
    arg.store(nullptr, std::memory_order_relaxed);
    kind.store(KindQuit, std::memory_order_release);
    wakeup.release();
}

void CCmtdThread::run()
{
    for (;;) {
        wakeup.acquire();
        const int job = kind.load(std::memory_order_acquire);
        void *argument = arg.load(std::memory_order_relaxed);
        report(owner, 1, 0, 0);
        if (job >= 2 && job <= 19)
            runJob(job, argument);
        report(owner, 2, job, 0);
        if (job == KindQuit)
            return;
        // Free the slot unless a quit was stored over the job while it ran.
        int expected = job;
        if (!kind.compare_exchange_strong(expected, KindNone, std::memory_order_acq_rel))
            return;
        arg.store(nullptr, std::memory_order_relaxed);
    }
}

void CCmtdThread::runJob(int job, void *argument)
{
    if (runPlantJob(job, argument))
        return;
    if (job >= SeriesJobDelta && job <= SeriesJobFreqDft) {
        auto *work = static_cast<VirtualChannelJob *>(argument);
        if (work && work->target && work->source)
            RunVirtualChannelJob(owner->recordingForJob(), *work->target, *work->source, work->params, report,
                                 owner);
        delete work;
        return;
    }
    if (job == KindRxTrace) {
        if (auto *work = static_cast<RxTraceJob *>(argument))
            work->complete = RxComputeTraces(*work->object, work->lo, work->hi, report, owner);
        return;
    }
    if (job == KindLoad) {
        const QByteArray path = owner->fileName().toLocal8Bit();
        CCmtd99File &file = owner->recordingForJob();
        file.LoadDat(path.constData(), report, owner);
        // An over-long file ends the loader before its closing step.
        if (file.scaleGroups.empty())
            file.BuildScaleGroups();
    }
}

bool CCmtdThread::runPlantJob(int job, void *argument)
{
    CCmtd99File &file = owner->recordingForJob();
    switch (job) {
    case PlantJobVoltsPerHertz: {
        auto *work = static_cast<UfCurveJob *>(argument);
        if (work && work->target)
            RunUfJob(file, work->params, *work->target, report, owner);
        delete work;
        return true;
    }
    case PlantJobPower: {
        auto *work = static_cast<PowerCurveJob *>(argument);
        if (work)
            RunPowerJob(file, work->params, work->channels, report, owner);
        delete work;
        return true;
    }
    case PlantJobLoadAngle: {
        auto *work = static_cast<LoadAngleCurveJob *>(argument);
        if (work && work->target)
            RunLoadAngleJob(file, work->params, *work->target, report, owner);
        delete work;
        return true;
    }
    default:
        return false;
    }
}
