#include "platform/parallel_rows.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace skyvault {

namespace {

using Work = std::function<void(int)>;
using Done = std::function<void(int)>;

// True on a thread that is inside a band: a loop started there runs on that thread alone.
thread_local bool insideBand = false;

class InsideBand {
  public:
    InsideBand() : before_(insideBand) { insideBand = true; }
    ~InsideBand() { insideBand = before_; }
    InsideBand(const InsideBand&) = delete;
    InsideBand& operator=(const InsideBand&) = delete;

  private:
    bool before_;
};

// The helper threads wait for a loop, take bands one by one under the mutex, and wait again. They are
// started when a loop first wants them and end with the process.
class Pool {
  public:
    ~Pool() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        loopStarted_.notify_all();
        for (std::thread& helper : helpers_) helper.join();
    }

    static Pool& Instance() {
        static Pool pool;
        return pool;
    }

    // False when another thread's loop is running: the caller then works alone.
    bool Run(int bandCount, int threads, const Work& work, const Done& done) {
        std::unique_lock lock(mutex_);
        if (work_) return false;
        StartHelpers(std::min(threads, bandCount) - 1);
        work_ = &work;
        next_ = 0;
        finished_ = 0;
        bandCount_ = bandCount;
        helpersWanted_ = std::min(threads, bandCount) - 1;
        loopStarted_.notify_all();

        int reported = 0;
        const auto report = [&] {
            if (!done || reported == finished_) return;
            reported = finished_;
            lock.unlock();
            done(reported);
            lock.lock();
        };
        while (RunNextBand(lock)) report();
        while (finished_ < bandCount_) {
            bandFinished_.wait(lock, [&] { return finished_ == bandCount_ || finished_ > reported; });
            if (done) {
                report();
            } else {
                reported = finished_;
            }
        }
        work_ = nullptr;
        lock.unlock();
        if (done && reported < bandCount) done(bandCount);
        return true;
    }

  private:
    void StartHelpers(int wanted) {
        try {
            while (static_cast<int>(helpers_.size()) < wanted) {
                const int number = static_cast<int>(helpers_.size());
                helpers_.emplace_back([this, number] { Help(number); });
            }
        } catch (const std::system_error&) {
            // The system has no more threads to give; the loop runs on those there are.
        } catch (const std::bad_alloc&) {
        }
    }

    void Help(int number) {
        std::unique_lock lock(mutex_);
        for (;;) {
            loopStarted_.wait(
                lock, [&] { return ending_ || (work_ && next_ < bandCount_ && number < helpersWanted_); });
            if (ending_) return;
            while (RunNextBand(lock)) {
            }
        }
    }

    // Takes a band, works on it with the mutex released, counts it. False when none is left.
    bool RunNextBand(std::unique_lock<std::mutex>& lock) {
        if (!work_ || next_ == bandCount_) return false;
        const int band = next_++;
        const Work& work = *work_;
        lock.unlock();
        {
            const InsideBand inside;
            work(band);
        }
        lock.lock();
        ++finished_;
        bandFinished_.notify_all();
        return true;
    }

    std::mutex mutex_;
    std::condition_variable loopStarted_, bandFinished_;
    const Work* work_ = nullptr;  // the running loop; null while there is none
    int next_ = 0, finished_ = 0, bandCount_ = 0, helpersWanted_ = 0;
    bool ending_ = false;
    std::vector<std::thread> helpers_;
};

int threadCount = 0;

int ThreadCount() {
    if (threadCount > 0) return threadCount;
    static const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    return cores;
}

}  // namespace

void SetThreadCount(int count) {
    threadCount = std::max(count, 0);
}

void ParallelBands(int bandCount, bool parallel, const Work& work, const Done& done) {
    const int threads = ThreadCount();
    if (bandCount > 1 && parallel && threads > 1 && !insideBand &&
        Pool::Instance().Run(bandCount, threads, work, done)) {
        return;
    }
    for (int band = 0; band < bandCount; ++band) {
        work(band);
        if (done) done(band + 1);
    }
    if (done && bandCount <= 0) done(0);
}

}  // namespace skyvault
