#include "listing/worker_pool.h"

WorkerPool::WorkerPool(const RunContext& listing, ListingLayout layout, int threads) : layout_(layout)
{
    // The workers copy the listing's settings here, before any thread runs.
    for (int i = 0; i < threads; ++i) workers_.push_back(std::make_unique<StretchWorker>(listing));
    for (auto& worker : workers_) threads_.emplace_back([this, w = worker.get()] { serve(*w); });
}

WorkerPool::~WorkerPool()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
        queue_.clear();
    }
    work_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void WorkerPool::give(ListingJob& job)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        job.given = true;
        queue_.push_back(&job);
    }
    work_.notify_one();
}

bool WorkerPool::wait(ListingJob& job)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (!job.given) return false;
    done_.wait(lock, [&] { return job.done || (!job.taken && stopping_); });
    return job.done;
}

void WorkerPool::stop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (ListingJob* job : queue_) job->given = false;
    queue_.clear();
    stopping_ = true;
    work_.notify_all();
}

void WorkerPool::serve(StretchWorker& worker)
{
    while (true) {
        ListingJob* job = nullptr;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            work_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
            if (queue_.empty()) return;
            job = queue_.front();
            queue_.pop_front();
            job->taken = true;
        }
        if (worker.ready()) worker.list(layout_, job->work);
        {
            std::lock_guard<std::mutex> lock(mutex_);
            job->done = true;
        }
        done_.notify_all();
    }
}
