#include "cli/program_run.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <regex>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quillon::testing {

namespace {

std::string ReadAll(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void Redirect(const std::string& path, int flags, int descriptor) {
    const int opened = open(path.c_str(), flags, 0600);
    if (opened < 0 || dup2(opened, descriptor) < 0)
        _exit(126);
    close(opened);
}

void Join(EProcessGroup group) {
    if (group == EProcessGroup::Own)
        setpgid(0, 0);
    else if (group == EProcessGroup::OwnSession)
        setsid();
}

/// A pipe that no other program inherits.
std::array<int, 2> OpenPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("cannot make a pipe");
    return ends;
}

bool WaitForText(const std::filesystem::path& path, const std::string& text) {
    using namespace std::chrono_literals;
    for (int nSteps = 0; nSteps < 3000; ++nSteps, std::this_thread::sleep_for(20ms))
        if (ReadAll(path).find(text) != std::string::npos)
            return true;
    return false;
}

} // namespace

std::vector<std::string> TProgramResult::OutLines() const {
    std::vector<std::string> lines;
    std::istringstream text(m_out);
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

CProgramRun::CProgramRun(const std::vector<std::string>& arguments, const TProgramInput& input) {
    m_folder.Write("in", input.m_text);
    m_folder.Write("out", "");
    m_folder.Write("err", "");
    const std::string in = m_folder.Path() / "in", err = m_folder.Path() / "err";
    const std::string out = input.m_outputPath.empty() ? std::string(m_folder.Path() / "out") : input.m_outputPath;
    std::vector<std::string> texts{QUILLON_PROGRAM};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& text : texts)
        argv.push_back(text.data());
    argv.push_back(nullptr);
    const std::array<int, 2> pipe = input.m_bFed ? OpenPipe() : std::array<int, 2>{-1, -1};
    m_nInput = pipe[1];
    m_pid = fork();
    if (m_pid < 0)
        throw std::runtime_error("cannot fork");
    if (m_pid == 0) {
        Join(input.m_group);
        if (!input.m_bFed)
            Redirect(in, O_RDONLY, STDIN_FILENO);
        else if (dup2(pipe[0], STDIN_FILENO) < 0)
            _exit(126);
        Redirect(out, O_WRONLY, STDOUT_FILENO);
        Redirect(err, O_WRONLY, STDERR_FILENO);
        execv(argv[0], argv.data());
        _exit(127);
    }
    if (input.m_bFed) {
        close(pipe[0]);
        Feed(input.m_text);
    }
}

CProgramRun::~CProgramRun() {
    CloseInput();
    if (m_pid <= 0)
        return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
}

void CProgramRun::Signal(int signal) const { kill(m_pid, signal); }

/// The system tells the mask of the signals that a process catches.
bool CProgramRun::WaitForHandler(int signal) const {
    using namespace std::chrono_literals;
    const std::regex caught(R"(SigCgt:\s*([0-9a-f]+))");
    for (int nSteps = 0; nSteps < 500; ++nSteps, std::this_thread::sleep_for(20ms)) {
        const std::string status = ReadAll("/proc/" + std::to_string(m_pid) + "/status");
        std::smatch mask;
        if (std::regex_search(status, mask, caught) && (std::stoull(mask[1], nullptr, 16) >> (signal - 1) & 1) != 0)
            return true;
    }
    return false;
}

bool CProgramRun::WaitForStop() const {
    using namespace std::chrono_literals;
    for (int nSteps = 0; nSteps < 3000; ++nSteps, std::this_thread::sleep_for(20ms)) {
        siginfo_t info{};
        if (waitid(P_PID, static_cast<id_t>(m_pid), &info, WSTOPPED | WNOHANG | WNOWAIT) == 0 && info.si_pid == m_pid)
            return true;
    }
    return false;
}

void CProgramRun::Feed(const std::string& text) const {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t written = write(m_nInput, text.data() + done, text.size() - done);
        if (written <= 0)
            break;
        done += static_cast<std::size_t>(written);
    }
    (void)std::signal(SIGPIPE, before);
}

void CProgramRun::CloseInput() {
    if (m_nInput >= 0)
        close(m_nInput);
    m_nInput = -1;
}

std::string CProgramRun::OutputSoFar() const { return ReadAll(m_folder.Path() / "out"); }

std::string CProgramRun::ErrorSoFar() const { return ReadAll(m_folder.Path() / "err"); }

bool CProgramRun::WaitForError(const std::string& text) const { return WaitForText(m_folder.Path() / "err", text); }
bool CProgramRun::WaitForOutput(const std::string& text) const { return WaitForText(m_folder.Path() / "out", text); }

TProgramResult CProgramRun::Finish() {
    CloseInput();
    int status = 0;
    rusage usage{};
    wait4(m_pid, &status, 0, &usage);
    m_pid = -1;
    TProgramResult result;
    result.m_nPeakBytes = std::int64_t{usage.ru_maxrss} * 1024; // told in KiB
    result.m_nStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.m_out = ReadAll(m_folder.Path() / "out");
    result.m_err = ReadAll(m_folder.Path() / "err");
    return result;
}

TProgramResult RunQuillon(const std::vector<std::string>& arguments, const TProgramInput& input) {
    return CProgramRun(arguments, input).Finish();
}

std::string WithoutTimes(const std::string& text) {
    static const std::regex kTime(R"([0-9]+\.[0-9]+ s(ec\.)?|"seconds":[0-9.e+-]+|[0-9]+ leaves per second)");
    return std::regex_replace(text, kTime, "T");
}

} // namespace quillon::testing
