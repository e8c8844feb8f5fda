// sweep.cpp - the sweep: every document meets every failure of what it asks for, one at a time.
//
// Starts one job for each document and pass, a few at once, and adds up what they found.

#include "sweep.h"

#include "documents.h"
#include "fileops.h"
#include "progress.h"
#include "support/alloc.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
static bool leaked()
{
    return __lsan_do_recoverable_leak_check() != 0;
}
#else
static bool leaked()
{
    return false;
}
#endif

// A first report of undefined behaviour ends the job, as one of the address sanitizer does.
extern "C" const char *__ubsan_default_options();
extern "C" const char *__ubsan_default_options()
{
    return "halt_on_error=1:print_stacktrace=1";
}

struct OPTIONS_T {
    std::vector<std::string> scenarios;   // for the faults of the platform
    std::vector<std::string> allocations; // for those of memory
    std::vector<std::string> files;       // for those of file operations
    std::string document;                 // "": all
    bool wide = false;
    unsigned every = 1;
    unsigned jobs = 2;
};

struct JOB_T {
    std::string name;
    std::function<void(SWEEP_T *)> body;
    pid_t pid = 0;
    TALLY_T *tally = nullptr;
    std::string root = {}; // removed by the parent: a job that crashes cannot
};

static const char USAGE[] =
    "usage: sweep [--scenario FILE]... [--allocations FILE]... [--files FILE]...\n"
    "             [--document NAME] [--wide] [--every N] [--jobs N]\n"
    "  --scenario FILE     fail each platform call and show command of each document on this scenario\n"
    "  --allocations FILE  fail each allocation of each document on this scenario\n"
    "  --files FILE        fail each file operation of each document on this scenario, and those of the store by\n"
    "                      itself\n"
    "  --wide              also garbage bytes, and texts cut at two thirds\n"
    "  --every N           a share: each N-th run\n";
constexpr unsigned CYCLE_PARTS = 4;

static bool optionsTake(int argc, char **argv, OPTIONS_T *options);
static bool wanted(const OPTIONS_T &options, const DOCUMENT_T &document);
static std::vector<JOB_T> faultJobs(const OPTIONS_T &options);
static std::vector<JOB_T> documentJobs(const OPTIONS_T &options, void (*pass)(SWEEP_T *, const DOCUMENT_T &));
static std::vector<JOB_T> filesJobs(const OPTIONS_T &options);
static bool scenarioRun(const OPTIONS_T &options, const std::string &scenario, std::vector<JOB_T> jobs, TALLY_T *total);
static void jobStart(const OPTIONS_T &options, const std::string &seeded, unsigned turn, JOB_T *job);
static int jobBody(const OPTIONS_T &options, const std::string &root, unsigned turn, const JOB_T &job);
static void jobEnd(std::vector<JOB_T> *jobs, TALLY_T *total);

int main(int argc, char **argv)
{
    OPTIONS_T options;
    TALLY_T total = {};

    if (!optionsTake(argc, argv, &options)) {
        fputs(USAGE, stderr);
        return 2;
    }
    allocInstall();
    fileopsInstall();
    documentsRegister();
    for (const std::string &scenario : options.scenarios) {
        if (!scenarioRun(options, scenario, faultJobs(options), &total))
            return 2;
    }
    for (const std::string &scenario : options.allocations) {
        if (!scenarioRun(options, scenario, documentJobs(options, documentAllocations), &total))
            return 2;
    }
    for (const std::string &scenario : options.files) {
        if (!scenarioRun(options, scenario, filesJobs(options), &total))
            return 2;
    }
    printf("sweep: %zu documents, %u runs, %u records that a fault changed, %u findings\n", documentsListed().size(),
           total.runs, total.changes, total.findings);
    return total.findings == 0 && total.runs > 0 ? 0 : 1;
}

static bool optionsTake(int argc, char **argv, OPTIONS_T *options)
{
    for (int i = 1; i < argc; i++) {
        bool valued = i + 1 < argc;
        if (strcmp(argv[i], "--wide") == 0)
            options->wide = true;
        else if (valued && strcmp(argv[i], "--scenario") == 0)
            options->scenarios.push_back(argv[++i]);
        else if (valued && strcmp(argv[i], "--allocations") == 0)
            options->allocations.push_back(argv[++i]);
        else if (valued && strcmp(argv[i], "--files") == 0)
            options->files.push_back(argv[++i]);
        else if (valued && strcmp(argv[i], "--document") == 0)
            options->document = argv[++i];
        else if (valued && strcmp(argv[i], "--every") == 0)
            options->every = static_cast<unsigned>(atoi(argv[++i]));
        else if (valued && strcmp(argv[i], "--jobs") == 0)
            options->jobs = static_cast<unsigned>(atoi(argv[++i]));
        else
            return false;
    }
    return options->every > 0 && options->jobs > 0 &&
           options->scenarios.size() + options->allocations.size() + options->files.size() > 0;
}

static bool wanted(const OPTIONS_T &options, const DOCUMENT_T &document)
{
    return options.document.empty() || options.document == document.name;
}

static std::vector<JOB_T> faultJobs(const OPTIONS_T &options)
{
    std::vector<JOB_T> jobs = documentJobs(options, documentFaults);

    for (unsigned part = 0; options.document.empty() && part < CYCLE_PARTS; part++)
        jobs.push_back({"all", [part](SWEEP_T *sweep) {
                            cycleFaults(sweep, part, CYCLE_PARTS);
                        }});
    return jobs;
}

static std::vector<JOB_T> documentJobs(const OPTIONS_T &options, void (*pass)(SWEEP_T *, const DOCUMENT_T &))
{
    std::vector<JOB_T> jobs;

    for (const DOCUMENT_T &document : documentsListed()) {
        if (wanted(options, document))
            jobs.push_back({document.name, [document, pass](SWEEP_T *sweep) {
                                pass(sweep, document);
                            }});
    }
    return jobs;
}

static std::vector<JOB_T> filesJobs(const OPTIONS_T &options)
{
    std::vector<JOB_T> jobs = documentJobs(options, documentFiles);

    if (options.document.empty() || options.document == "store")
        jobs.push_back({"store", storeFailures});
    return jobs;
}

// False when the scenario cannot be run at all.
static bool scenarioRun(const OPTIONS_T &options, const std::string &scenario, std::vector<JOB_T> jobs, TALLY_T *total)
{
    std::string seeded = rootSeed(scenario);
    unsigned running = 0;
    unsigned turn = 0;

    if (seeded.empty() || !switchUse(seeded, scenario)) {
        rootRemove(seeded);
        return false;
    }
    vsFaultsClear(); // the clean text is the one without the scenario's own
    for (JOB_T &job : jobs) {
        if (running == options.jobs)
            jobEnd(&jobs, total);
        else
            running++;
        jobStart(options, seeded, turn++, &job);
    }
    while (running-- > 0)
        jobEnd(&jobs, total);
    rootRemove(seeded);
    return true;
}

static void jobStart(const OPTIONS_T &options, const std::string &seeded, unsigned turn, JOB_T *job)
{
    void *shared = mmap(nullptr, sizeof(TALLY_T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    std::string root = rootCopy(seeded);

    if (shared == MAP_FAILED || root.empty())
        exit(2);
    job->tally = static_cast<TALLY_T *>(shared);
    snprintf(job->tally->at, sizeof(job->tally->at), "%s", job->name.c_str());
    job->root = root;
    fflush(stdout);
    job->pid = fork();
    if (job->pid == 0)
        _exit(jobBody(options, root, turn, *job));
}

static int jobBody(const OPTIONS_T &options, const std::string &root, unsigned turn, const JOB_T &job)
{
    SWEEP_T sweep = {job.tally, options.wide, options.every, turn};

    if (!switchUse(root, ""))
        return 2;
    job.body(&sweep);
    alarm(0);
    if (leaked())
        finding(&sweep, "memory is lost in a run of this job");
    return 0;
}

// How many jobs of this pass have ended, and where the others are.
static void sweepProgress(const std::vector<JOB_T> &jobs, const TALLY_T &total)
{
    size_t ended = 0;
    unsigned runs = total.runs;
    std::string at;

    for (const JOB_T &job : jobs) {
        ended += job.pid == -1;
        if (job.pid <= 0)
            continue;
        runs += job.tally->runs;
        at += (at.empty() ? "" : ", ") + job.name;
    }
    progressSay("sweep: %zu of %zu jobs of this pass, %u runs, at %s", ended, jobs.size(), runs, at.c_str());
}

// Wait for a job that ends. One that does not end by itself is a finding: a crash, or a sanitizer's report.
static void jobEnd(std::vector<JOB_T> *jobs, TALLY_T *total)
{
    int status = 0;
    pid_t pid;

    while ((pid = waitpid(-1, &status, WNOHANG)) == 0) {
        sweepProgress(*jobs, *total);
        usleep(10000);
    }
    for (JOB_T &job : *jobs) {
        if (job.pid != pid)
            continue;
        if (status != 0) {
            job.tally->findings++;
            printf("%s: %s %d\n", job.tally->at, WIFSIGNALED(status) ? "ended by signal" : "ended with status",
                   WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
        }
        total->runs += job.tally->runs;
        total->changes += job.tally->changes;
        total->findings += job.tally->findings;
        rootRemove(job.root);
        munmap(job.tally, sizeof(TALLY_T));
        job.pid = -1;
    }
}
