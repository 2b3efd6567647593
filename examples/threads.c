/*
 * threads.c: a back end with several threads, on one endpoint under one lock.
 *
 *   cc threads.c $(pkg-config --cflags --libs device_mgmt) -pthread -o threads
 */
#include <device_mgmt.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>

enum { threads = 4, rounds = 25 };

/*
 * The endpoint, the connection to konfd and vor_errno belong to the process. The lock is held from before vor_errno is
 * cleared until everything that the call left behind has been copied: its status, and a record that it returned. A call
 * that gets no answer holds it until the platform gives up; where that is too long, see per_request.c.
 */
static pthread_mutex_t gateway = PTHREAD_MUTEX_INITIALIZER;

/* What a caller gets: a code is worth little without its status. */
typedef struct {
    vor_int32 code, status;
} OUTCOME;

static OUTCOME set_direction(vor_int16 port, vor_int16 direction)
{
    OUTCOME outcome;
    pthread_mutex_lock(&gateway);
    vor_errno = 0;
    outcome.code = vor_cfg_set_gpio_direction(port, direction, 0);
    outcome.status = vor_errno;
    pthread_mutex_unlock(&gateway);
    return outcome;
}

/* 1: the statistics are in the caller's own record. The library's is gone with the next call, whoever makes it. */
static int read_statistics(vor_int16 port, GPIO_PIN_STATS* statistics)
{
    pthread_mutex_lock(&gateway);
    const GPIO_PIN_STATS* const borrowed = vor_cfg_get_gpio_port_stats(port);
    if (borrowed != NULL) {
        memcpy(statistics, borrowed, sizeof *statistics);
    }
    pthread_mutex_unlock(&gateway);
    return borrowed != NULL;
}

typedef struct {
    pthread_t thread;
    vor_int16 port;
    int accepted, read;
} WORKER;

static void* work(void* argument)
{
    WORKER* const worker = argument;
    for (vor_int16 round = 0; round < rounds; round++) {
        GPIO_PIN_STATS statistics;
        worker->accepted += set_direction(worker->port, (vor_int16)(round % 2)).code == VOR_CODE_DONE;
        worker->read += read_statistics(worker->port, &statistics) && statistics.logical_port_no == worker->port;
    }
    return NULL;
}

int main(void)
{
    WORKER workers[threads] = {{0}};
    /* before the threads start: they inherit the signal mask, in which the bind blocks a signal of the platform */
    if (vor_cfg_create_ipc_endpoint(200) != 0) {
        return 1;
    }
    int started = 0;
    for (; started < threads; started++) {
        workers[started].port = (vor_int16)(started + 1);
        if (pthread_create(&workers[started].thread, NULL, work, &workers[started]) != 0) {
            break;
        }
    }
    for (int i = 0; i < started; i++) {
        pthread_join(workers[i].thread, NULL);
        printf("port %d: %d accepted, %d read\n", workers[i].port, workers[i].accepted, workers[i].read);
    }
    vor_cfg_remove_ipc_endpoint(); /* when no thread makes calls any more */
    return started == threads ? 0 : 1;
}
