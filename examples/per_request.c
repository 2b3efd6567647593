/*
 * per_request.c: a back end that serves each request in a process of its own, several at a time. No request waits for
 * another one's manager, and one that crashes or hangs takes nothing with it.
 *
 *   cc per_request.c $(pkg-config --cflags --libs device_mgmt) -o per_request
 *   printf '3 1\n4 0\n' | ./per_request
 *
 * A request is a line: a port and its direction.
 */
#define _POSIX_C_SOURCE 200809L
#include <device_mgmt.h>
#include <device_mgmt/code_text.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

enum {
    first_sap = 210, /* a range that no other program uses, */
    at_once = 4,     /* of as many as requests are served at a time */
    patience = 30    /* seconds that a request may take */
};

static pid_t serving[at_once]; /* the process that has first_sap + i; 0: nobody has it */

/* In the child: binds its own SAP, makes the call, unbinds. */
static int serve(vor_uint16 sap, vor_int16 port, vor_int16 direction)
{
    alarm(patience); /* ends this process only */
    if (vor_cfg_create_ipc_endpoint(sap) != 0) {
        fprintf(stderr, "port %d: SAP %u is taken\n", port, sap);
        return 1;
    }
    vor_errno = 0; /* so that it tells the two meanings of VOR_CODE_REFUSED apart */
    const vor_int32 code = vor_cfg_set_gpio_direction(port, direction, 0);
    const vor_int32 status = vor_errno;
    vor_cfg_remove_ipc_endpoint();
    /* not every failure means that nothing changed, and the text says so */
    printf("port %d: %s (code %d, status %d)\n", port,
           code == VOR_CODE_DONE ? "accepted" : device_mgmt_code_text(code, status), (int)code, (int)status);
    return code == VOR_CODE_DONE ? 0 : 1;
}

/* Waits for a child. The kernel has closed what it had by then, even if it was killed, so its SAP can be given away. */
static int reap(void)
{
    int status = 0;
    const pid_t ended = wait(&status);
    for (int i = 0; i < at_once; i++) {
        if (ended > 0 && serving[i] == ended) {
            serving[i] = 0;
        }
    }
    if (ended > 0 && WIFSIGNALED(status)) {
        fprintf(stderr, "a request ended by signal %d: it may or may not have been done\n", WTERMSIG(status));
    }
    return ended > 0;
}

static int unused_place(void)
{
    for (;;) {
        for (int i = 0; i < at_once; i++) {
            if (serving[i] == 0) {
                return i;
            }
        }
        reap();
    }
}

int main(void)
{
    char line[64];
    int port = 0, direction = 0;
    while (fgets(line, sizeof line, stdin) != NULL) {
        if (sscanf(line, "%d %d", &port, &direction) != 2 || port != (vor_int16)port ||
            direction != (vor_int16)direction) {
            fprintf(stderr, "not a port and a direction: %s", line);
            continue;
        }
        const int place = unused_place();
        fflush(stdout); /* the child would print it once more */
        serving[place] = fork();
        if (serving[place] == 0) {
            const int code = serve((vor_uint16)(first_sap + place), (vor_int16)port, (vor_int16)direction);
            fflush(stdout);
            _exit(code); /* exit would move the parent's place in the requests back */
        }
        if (serving[place] < 0) {
            perror("fork");
            return 1;
        }
    }
    while (reap()) {}
    return 0;
}
