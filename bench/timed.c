/*
 * timed WHAT COMMAND...: seconds and memory of a command whose output is of no interest.
 */
#define _GNU_SOURCE
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

int main(int count, char** arguments)
{
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    struct timespec start;
    struct timespec end;
    struct rusage used;
    pid_t process;
    int status = 1;
    clock_gettime(CLOCK_MONOTONIC, &start);
    if (count < 3 || posix_spawn(&process, arguments[2], &quiet, NULL, arguments + 2, environ) != 0 ||
        wait4(process, &status, 0, &used) != process || status != 0) {
        fprintf(stderr, "timed: %s failed\n", count < 3 ? "no command" : arguments[2]);
        return 1;
    }
    clock_gettime(CLOCK_MONOTONIC, &end);
    printf("  %-16s %10.6f s %8ld kB\n", arguments[1],
           (double)(end.tv_sec - start.tv_sec) + (double)(end.tv_nsec - start.tv_nsec) / 1e9, used.ru_maxrss);
    return 0;
}
