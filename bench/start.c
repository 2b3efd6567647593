/*
 * start ROUNDS PROGRAM COMMAND...: the median time that each takes as a whole
 * process, started in turn so that a busy moment is both's, and their ratio.
 */
#define _GNU_SOURCE
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

static double microseconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec * 1e6 + (double)now.tv_nsec / 1e3;
}

static double run(char** command)
{
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    const double start = microseconds();
    pid_t process;
    int status = 1;
    if (posix_spawn(&process, command[0], &quiet, NULL, command, environ) == 0) {
        waitpid(process, &status, 0);
    }
    const double taken = microseconds() - start;
    posix_spawn_file_actions_destroy(&quiet);
    if (status != 0) {
        fprintf(stderr, "start: %s failed\n", command[0]);
        exit(1);
    }
    return taken;
}

static int by_size(const void* one, const void* other)
{
    const double difference = *(const double*)one - *(const double*)other;
    return (difference > 0) - (difference < 0);
}

int main(int count, char** words)
{
    const int rounds = count > 3 ? atoi(words[1]) : 0;
    if (rounds <= 0) {
        fputs("usage: start ROUNDS PROGRAM COMMAND...\n", stderr);
        return 2;
    }
    double* const taken[] = {calloc((size_t)rounds, sizeof(double)), calloc((size_t)rounds, sizeof(double))};
    if (taken[0] == NULL || taken[1] == NULL) {
        return 1;
    }
    char* alone[] = {words[2], NULL};
    for (int i = 0; i < rounds; i++) {
        taken[0][i] = run(alone);
        taken[1][i] = run(words + 3);
    }
    for (int i = 0; i < 2; i++) {
        qsort(taken[i], (size_t)rounds, sizeof(double), by_size);
    }
    const double program = taken[0][rounds / 2];
    const double tool = taken[1][rounds / 2];
    printf("  %-44s %7.0f us\n  %-44s %7.0f us\n  %-44s %7.2f  (at most 1.50)\n", "a C program of this call alone",
           program, "vorcfg", tool, "vorcfg against it", tool / program);
    free(taken[0]);
    free(taken[1]);
    return 0;
}
