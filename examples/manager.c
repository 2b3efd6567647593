/*
 * manager.c: a manager that takes the place of one of vorsim's. It replaces
 * gpiomgr, accepts names of channels and refuses everything else.
 *
 *   vorsim --without gpiomgr &
 *   cc manager.c -lvorinfra -o manager && ./manager &
 *   vorcfg gpio set-channel-name 3 door 1
 */
#include <stdio.h>

#include <vorinfra_manager.h>

enum { gpiomgr = 4, settings = 0x4004 };           /* its SAP and its message id */
enum { port_tag = 1, name_tag = 5 };               /* elements of the message */
enum { accepted = 0, unknown = 2, malformed = 3 }; /* statuses */

static vor_int32 status_of(const VORINFRA_MESSAGE* message)
{
    VORINFRA_ELEMENT element;
    vor_uint16 cursor = 0;
    vor_int32 port = -1;

    if (message->id != settings) {
        return unknown;
    }
    while (vorinfra_next_element(message->payload, message->payload_size, &cursor, &element) == 1) {
        if (element.tag == port_tag) {
            port = element.number;
        } else if (element.tag == name_tag) {
            printf("port %d is called %.*s\n", (int)port, (int)element.size, (const char*)element.value);
            return accepted;
        }
    }
    return malformed;
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
            const vor_int32 status = status_of(&message);
            if (message.answer_wanted) {
                vorinfra_answer(handle, &message, message.id, &status, sizeof status);
            }
        }
    }
}
