// SPDX-License-Identifier: Apache-2.0
/* A program as a process of its own, with nowhere to print to. */
#pragma once

#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

/* The program and its arguments; NAME=VALUE settings, which are its whole environment. False when it
 * does not run or its status is not 0. */
inline bool run_program(std::vector<std::string> words, std::vector<std::string> environment) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    std::vector<char*> argv, envp;
    for (std::string& word : words)
        argv.push_back(word.data());
    for (std::string& entry : environment)
        envp.push_back(entry.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    pid_t pid = 0;
    int status = -1;
    const bool good =
        posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data()) == 0 &&
        waitpid(pid, &status, 0) == pid && status == 0;
    posix_spawn_file_actions_destroy(&actions);
    return good;
}
