/*
 * manager.c: a manager that takes the place of vorsim's gpiomgr. It accepts
 * whatever is set of a port, prints the names of channels and answers queries.
 *
 *   vorsim --without gpiomgr &                       (alone)
 *   cc manager.c -lvorinfra -o manager && ./manager &
 *   vorcfg gpio set-channel-name 3 door 1
 *
 *   vorsim --via gpiomgr=/run/user/1000/real &       (checked by vorsim)
 *   VORINFRA_DIR=/run/user/1000/real ./manager &
 */
#include <stdio.h>
#include <string.h>

#include <device_mgmt/gpio.h>
#include <vorinfra_manager.h>

enum { gpiomgr = 4, settings = 0x4004, statistics = 0x4007 }; /* its SAP and its message ids */
enum { port_tag = 1, name_tag = 5 };                          /* elements of a setting */
enum { accepted = 0, unknown = 2, malformed = 3 };            /* statuses */

static vor_int32 accept(const VORINFRA_MESSAGE* message)
{
    VORINFRA_ELEMENT element;
    vor_uint16 cursor = 0;
    vor_int32 port = -1;

    while (vorinfra_next_element(message->payload, message->payload_size, &cursor, &element) == 1) {
        if (element.tag == port_tag) {
            port = element.number;
        } else if (element.tag == name_tag) {
            printf("port %d is called %.*s\n", (int)port, (int)element.size, (const char*)element.value);
        }
    }
    return port >= 0 ? accepted : malformed;
}

static void answer(VOR_IPC_HANDLE* handle, const VORINFRA_MESSAGE* message)
{
    GPIO_PIN_NO asked;
    GPIO_PIN_STATS counted = {0};
    vor_int32 status = unknown;

    if (message->id == statistics && message->payload_size == sizeof asked) {
        memcpy(&asked, message->payload, sizeof asked);
        counted.logical_port_no = asked.logical_port_no;
        vorinfra_answer(handle, message, message->id, &counted, sizeof counted);
        return;
    }
    if (message->id == settings) {
        status = accept(message);
    }
    if (message->answer_wanted) {
        vorinfra_answer(handle, message, message->id, &status, sizeof status);
    }
}

int main(void)
{
    static VORINFRA_MESSAGE message;
    VOR_IPC_HANDLE* const handle = vor_ipc_bind(gpiomgr, 0);

    if (handle == NULL) {
        return 1; /* the platform has reported why */
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    puts("manager: ready");
    for (;;) {
        if (vorinfra_await(handle, &message) == 1) {
            answer(handle, &message);
        }
    }
}
