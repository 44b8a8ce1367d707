#include "Quorvex.Thread.BackgroundWorker.hpp"

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Strings.hpp"
#include "Quorvex.Rtl.Units.hpp"
#include "Quorvex.System.Actions.hpp"

namespace Quorvex::Thread::BackgroundWorker {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(BackgroundWorkerUnit, u"Quorvex.Thread.BackgroundWorker", nullptr, nullptr);

namespace {

using System::Actions::TAnonAction;

// Runs `deliver` on the making thread, keeping `worker` alive until then.
void DeliverOnOwner(IThreadScheduler& scheduler, TBackgroundWorkerBase* worker,
                    std::function<void(TBackgroundWorkerBase&)> deliver) {
  const IntfPtr<System::Async::IAsync> keep(worker);
  scheduler.Schedule(Rtl::Objects::CreateObject<TAnonAction<>>(
      [keep, worker, deliver = std::move(deliver)] { deliver(*worker); }));
}

}  // namespace

TBackgroundWorkerBase::TBackgroundWorkerBase() : FScheduler(Scheduler::TThreadScheduler::FromCurrentThreadContext()) {}

void TBackgroundWorkerBase::Start(const IntfPtr<IThreadPool>& APool) {
  if (!APool) throw Rtl::Exceptions::EArgumentException(u"Cannot start on a nil pool");
  if (FStarted.exchange(true)) throw Rtl::Exceptions::EInvalidOperation(u"The worker has already been started");
  APool->Schedule(IntfPtr<System::Async::IAsync>(this));
}

void TBackgroundWorkerBase::ReportProgress(int32_t APercent, const UnicodeString& AMessage) {
  if (APercent < 0 || APercent > 100)
    throw Rtl::Exceptions::EArgumentOutOfRangeException(u"Progress must be between 0 and 100 (" +
                                                        Rtl::Strings::IntToStr(APercent) + u")");
  DeliverOnOwner(*FScheduler, this, [APercent, AMessage](TBackgroundWorkerBase& worker) {
    if (worker.OnProgress) worker.OnProgress(APercent, AMessage);
  });
}

void TBackgroundWorkerBase::Finished() {
  DeliverOnOwner(*FScheduler, this, [](TBackgroundWorkerBase& worker) { worker.DeliverCompleted(); });
}

}  // namespace Quorvex::Thread::BackgroundWorker
