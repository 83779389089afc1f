// An X server of the tests' own.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

extern "C" char** environ;

namespace qel::test {

// Xvfb on a display that is free, with $DISPLAY set to it as long as the object lives.
class CTestXServer
{
public:
    explicit CTestXServer(const std::string& screen = "1024x768x24")
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe for Xvfb");
        }
        std::string arguments[] = {"Xvfb", "-displayfd", "3", "-screen", "0", screen, "-nolisten", "tcp"};
        char* pointers[std::size(arguments) + 1] = {};
        for (std::size_t i = 0; i < std::size(arguments); ++i) {
            pointers[i] = arguments[i].data();
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 3);
        const int error = posix_spawnp(&process_, "Xvfb", &actions, nullptr, pointers, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        char byte = 0;
        while (!error && read(ends[0], &byte, 1) == 1 && byte != '\n') {
            number_ += byte;
        }
        close(ends[0]);
        if (number_.empty()) {
            throw std::runtime_error("Xvfb does not start");
        }
        const char* display = std::getenv("DISPLAY");
        oldDisplay_ = display ? display : "";
        setenv("DISPLAY", (":" + number_).c_str(), 1);
    }
    CTestXServer(const CTestXServer&) = delete;
    CTestXServer& operator=(const CTestXServer&) = delete;
    ~CTestXServer()
    {
        kill();
        if (oldDisplay_.empty()) {
            unsetenv("DISPLAY");
        } else {
            setenv("DISPLAY", oldDisplay_.c_str(), 1);
        }
    }

    // As if it crashed.
    void kill()
    {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
            process_ = -1;
            unlink(("/tmp/.X" + number_ + "-lock").c_str());
            unlink(("/tmp/.X11-unix/X" + number_).c_str());
        }
    }

private:
    pid_t process_ = -1;
    std::string number_;
    std::string oldDisplay_;
};

} // namespace qel::test
