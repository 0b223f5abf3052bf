#include "worker_pool.h"

#include "failure.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <optional>
#include <utility>

namespace tympan::tool {

namespace {

// Jobs that queue up: so many, or so large ones together.
constexpr std::size_t kMostQueued = 8;
constexpr std::uint64_t kMostSizeQueued = std::uint64_t{ 1 } << 20U;

constexpr int kWorkerSocket = 3; // the first number behind the standard streams

// A person's Ctrl-C goes to the workers too. The program ends by it, and they with the program: one
// that ended before it would look like a crash.
void LeaveSignalsToProgram(pid_t parent)
{
    for (const int signal : { SIGINT, SIGQUIT, SIGHUP })
        std::signal(signal, SIG_IGN);
    for (const int signal : { SIGTERM, SIGPIPE, SIGXCPU })
        std::signal(signal, SIG_DFL);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        std::_Exit(EXIT_FAILURE); // it ended before it could be followed
}

// Leaves the standard streams and the socket open: the manifest and the other workers' sockets are
// not this worker's.
void KeepOnly(int socket)
{
    if (socket != kWorkerSocket && dup2(socket, kWorkerSocket) < 0)
        std::_Exit(EXIT_FAILURE);
    close_range(kWorkerSocket + 1, std::numeric_limits<unsigned int>::max(), 0);
}

void LimitMemory(std::uint64_t bytes)
{
    if (bytes == 0)
        return;
    const rlimit limit{ static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes) };
    if (setrlimit(RLIMIT_AS, &limit) != 0)
        std::_Exit(EXIT_FAILURE);
}

int StatusOf(pid_t process)
{
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string HowItEnded(int status)
{
    if (WIFSIGNALED(status))
        return "was ended by signal " + std::to_string(WTERMSIG(status)) + " (" +
               strsignal(WTERMSIG(status)) + ")";
    return "ended with status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

WorkerPool::WorkerPool(Work work, const WorkerLimits& limits)
    : work_(std::move(work)), limits_(limits), workers_(limits.workers)
{}

WorkerPool::~WorkerPool()
{
    for (const Worker& worker : workers_) {
        if (worker.process < 0)
            continue;
        if (!worker.jobs.empty())
            kill(worker.process, SIGKILL);
        close(worker.socket);
        StatusOf(worker.process);
    }
}

void WorkerPool::Start(Worker& worker)
{
    std::array<int, 2> ends{ -1, -1 };
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw SystemFailure("a job's socket", errno);
    std::cout.flush(); // or the worker would write it once more
    const pid_t parent = getpid();
    const pid_t process = fork();
    const int error = errno;
    if (process == 0)
        Serve(ends[1], parent);
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        throw SystemFailure("a job's process", error);
    }
    worker.process = process;
    worker.socket = ends[0];
    worker.receiver = {};
}

// Starts another in the place of one that is gone, and gives it the jobs that are left.
void WorkerPool::Replace(Worker& worker)
{
    Start(worker);
    BeginJob(worker);
    for (const Job& job : worker.jobs)
        if (!SendMessage(worker.socket, job.request))
            return; // gone too, which waiting for it tells
}

void WorkerPool::Serve(int socket, pid_t parent) const
{
    LeaveSignalsToProgram(parent);
    KeepOnly(socket);
    LimitMemory(limits_.memory);
    MessageReceiver receiver;
    while (true) {
        const std::optional<std::string> request = receiver.Take();
        if (request ? !SendMessage(kWorkerSocket, work_(*request))
                    : !receiver.Receive(kWorkerSocket))
            std::exit(EXIT_SUCCESS); // the program is done, or has no use for this worker
    }
}

bool WorkerPool::Worker::HasRoom() const
{
    std::uint64_t size = 0;
    for (const Job& job : jobs)
        size += std::min(job.size, kMostSizeQueued);
    return jobs.empty() || (jobs.size() < kMostQueued && size < kMostSizeQueued);
}

bool WorkerPool::HasRoom() const
{
    return std::any_of(workers_.begin(), workers_.end(),
                       [](const Worker& worker) { return worker.HasRoom(); });
}

void WorkerPool::BeginJob(Worker& worker) const
{
    worker.deadline =
        limits_.perJob.count() == 0 ? Clock::time_point::max() : Clock::now() + limits_.perJob;
}

void WorkerPool::Give(std::uint64_t ticket, std::string request, std::uint64_t size)
{
    const auto fewerJobs = [](const Worker& one, const Worker& other) {
        return one.HasRoom() != other.HasRoom() ? one.HasRoom()
                                                : one.jobs.size() < other.jobs.size();
    };
    Worker& worker = *std::min_element(workers_.begin(), workers_.end(), fewerJobs);
    const bool isFirst = worker.jobs.empty();
    worker.jobs.push_back({ ticket, std::move(request), size });
    ++jobs_;
    if (isFirst)
        BeginJob(worker);
    if (worker.process >= 0 && (SendMessage(worker.socket, worker.jobs.back().request) || !isFirst))
        return; // that a busy one is gone is told when it is waited for
    if (worker.process >= 0) {
        close(worker.socket); // somebody ended it while it had nothing to do
        StatusOf(worker.process);
    }
    Replace(worker);
}

JobEnd WorkerPool::EndJob(Worker& worker, std::string reply, std::string howItEnded)
{
    const std::uint64_t ticket = worker.jobs.front().ticket;
    worker.jobs.pop_front();
    --jobs_;
    BeginJob(worker);
    return { ticket, std::move(reply), std::move(howItEnded) };
}

void WorkerPool::Look(Worker& worker, bool hasNews, std::vector<JobEnd>& ended)
{
    const bool isGone = hasNews && !worker.receiver.Receive(worker.socket);
    while (std::optional<std::string> reply = worker.receiver.Take())
        ended.push_back(EndJob(worker, std::move(*reply), {}));
    const bool isLate = !worker.jobs.empty() && Clock::now() >= worker.deadline;
    if (!isGone && !isLate)
        return;
    if (!isGone)
        kill(worker.process, SIGKILL);
    close(worker.socket);
    const int status = StatusOf(std::exchange(worker.process, -1));
    ended.push_back(EndJob(worker, {},
                           isGone ? HowItEnded(status)
                                  : "took longer than " + std::to_string(limits_.perJob.count()) +
                                        " seconds and was ended"));
    if (!worker.jobs.empty())
        Replace(worker);
}

// Milliseconds until the first deadline, -1 for none.
int WorkerPool::PollTime() const
{
    using std::chrono::milliseconds;
    if (limits_.perJob.count() == 0)
        return -1;
    Clock::time_point first = Clock::time_point::max();
    for (const Worker& worker : workers_)
        if (!worker.jobs.empty())
            first = std::min(first, worker.deadline);
    const auto left = std::chrono::ceil<milliseconds>(first - Clock::now()).count();
    return static_cast<int>(
        std::clamp<milliseconds::rep>(left, 0, std::numeric_limits<int>::max()));
}

std::vector<JobEnd> WorkerPool::Wait()
{
    std::vector<JobEnd> ended;
    std::vector<pollfd> watched(workers_.size());
    while (ended.empty()) {
        for (std::size_t i = 0; i < workers_.size(); ++i)
            watched[i] = { workers_[i].jobs.empty() ? -1 : workers_[i].socket, POLLIN, 0 };
        if (poll(watched.data(), watched.size(), PollTime()) < 0 && errno != EINTR)
            throw SystemFailure("the jobs' sockets", errno);
        for (std::size_t i = 0; i < workers_.size(); ++i)
            if (!workers_[i].jobs.empty())
                Look(workers_[i], watched[i].revents != 0, ended);
    }
    return ended;
}

} // namespace tympan::tool
