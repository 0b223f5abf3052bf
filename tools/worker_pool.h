// Processes that do jobs side by side. One that crashes, is ended or takes too long costs its job,
// and nothing else: another takes its place.
#pragma once

#include "worker_messages.h"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace tympan::tool {

/// What the workers are held to.
struct WorkerLimits {
    unsigned int workers = 1;
    std::chrono::seconds perJob{ 0 }; ///< 0 for no limit
    std::uint64_t memory = 0;         ///< bytes of addresses of a worker; 0 for no limit
};

/// What became of a job.
struct JobEnd {
    std::uint64_t ticket = 0; ///< as it was given
    std::string reply;        ///< empty when the worker ended
    std::string howItEnded;   ///< such as "was ended by signal 9 (Killed)"; empty with a reply
};

/// Workers are forked when they are first needed, and have whatever the program had then. They do
/// their jobs one after the other, and end with the pool, or with the program however that ends.
/// Small jobs queue up in front of a worker, so that it needn't wait for the program between them.
class WorkerPool {
  public:
    /// Done in a worker. It may not throw, and not write to standard output.
    using Work = std::function<std::string(const std::string& request)>;

    WorkerPool(Work work, const WorkerLimits& limits);
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;
    /// Ends the workers, those at work too.
    ~WorkerPool();

    /// Whether a worker takes one more job.
    bool HasRoom() const;
    /// Whether jobs are under way.
    bool IsBusy() const { return jobs_ != 0; }

    /// Gives a job to the worker that has the fewest: there must be room.
    /// \param ticket by which the job is known when it has ended
    /// \param size a measure of the work: bytes that are read
    /// \throws FileFailure when no worker can be made.
    void Give(std::uint64_t ticket, std::string request, std::uint64_t size);

    /// Waits until jobs have ended: at least one must be under way.
    std::vector<JobEnd> Wait();

  private:
    using Clock = std::chrono::steady_clock;

    struct Job {
        std::uint64_t ticket = 0;
        std::string request; // kept, for the worker that takes over
        std::uint64_t size = 0;
    };

    struct Worker {
        pid_t process = -1;
        int socket = -1;
        std::deque<Job> jobs; // the first is being done
        Clock::time_point deadline{};
        MessageReceiver receiver;

        bool HasRoom() const;
    };

    void Start(Worker& worker);
    void Replace(Worker& worker);
    [[noreturn]] void Serve(int socket, pid_t parent) const;
    void BeginJob(Worker& worker) const;
    JobEnd EndJob(Worker& worker, std::string reply, std::string howItEnded);
    void Look(Worker& worker, bool hasNews, std::vector<JobEnd>& ended);
    int PollTime() const;

    Work work_;
    WorkerLimits limits_;
    std::vector<Worker> workers_;
    std::size_t jobs_ = 0;
};

} // namespace tympan::tool
