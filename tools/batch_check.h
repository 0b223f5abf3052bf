// `tympan check` over many files: by several processes, in constant memory, told in the order of
// the walk.
#pragma once

#include "batch_job.h"
#include "worker_pool.h"

#include <string>
#include <vector>

namespace tympan::tool {

struct BatchOptions {
    std::vector<std::string> paths;
    bool intoFolders = false;
    WorkerLimits limits;
    JobOptions job;
    std::string manifest;           ///< empty for none
    std::vector<std::string> since; ///< manifests of earlier runs
};

/// Checks all, tells each file on standard output and the summary behind them: on standard error,
/// or with lines of JSON as the last of them.
/// \throws FailuresReported when not all is well; FileFailure when the run can't go on.
void CheckBatch(const BatchOptions& options);

} // namespace tympan::tool
