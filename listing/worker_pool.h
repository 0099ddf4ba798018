// Worker threads that list stretches of records ahead of the listing, each
// in its own run context; the listing waits for each stretch in order.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "listing/stretch_worker.h"

// A stretch on its way through the pool.
struct ListingJob {
    StretchJob work;
    bool tail = false;   // walked by the listing itself, last
    bool given = false;  // handed to the workers
    bool taken = false;  // a worker began it
    bool done = false;
};

class WorkerPool {
public:
    WorkerPool(const RunContext& listing, ListingLayout layout, int threads);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void give(ListingJob& job);
    // Waits until the job is done; true when a worker listed it.
    bool wait(ListingJob& job);
    // Jobs not begun are no longer given to a worker; those begun end.
    void stop();

private:
    void serve(StretchWorker& worker);

    ListingLayout layout_;
    std::mutex mutex_;
    std::condition_variable work_;
    std::condition_variable done_;
    std::deque<ListingJob*> queue_;
    bool stopping_ = false;
    std::vector<std::unique_ptr<StretchWorker>> workers_;
    std::vector<std::thread> threads_;
};

