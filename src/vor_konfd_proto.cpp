// konfd's queries: built piece by piece, sent as one command, answered by "-o" or "-e".
#include <device_mgmt/common.h>
#include <device_mgmt/konfd.h>

#include <cstdio>
#include <cstring>

#include <vorinfra.h>

namespace {

// A literal and the figure it counts in a command's length, which often exceeds its text.
struct Literal {
    vor_char text[8];
    vor_int32 counted;
};

constexpr Literal operations[] = {{"-s", 2}, {"-c", 2}, {"-u", 2}}; // set, check, unset: ops 1 to 3
constexpr vor_uchar first_op = 1;
constexpr vor_uchar unset_op = 3;

constexpr Literal line_opens = {" -l \"", 6};
constexpr Literal pattern_follows_line = {"\" -r \"", 8};
constexpr Literal pattern_opens = {" -r \"", 6};
constexpr Literal pattern_closes = {"\"", 2};
constexpr Literal priority_opens = {" -p ", 4};
constexpr Literal path_opens = {" \"", 3};
constexpr Literal path_closes = {"\"", 2};

// Grows *string by at most len characters of text. Without memory it silently stays as it was.
void vor_cfg_str_cat(vor_char** string, const vor_char* text, vor_int32 len)
{
    if (text == nullptr) {
        return;
    }
    const vor_int32 text_length = vor_strlen(text);
    const vor_int32 added = len < text_length ? len : text_length;
    const vor_int32 old_length = *string == nullptr ? 0 : vor_strlen(*string);
    auto* const grown = static_cast<vor_char*>(vor_realloc(*string, static_cast<vor_uint32>(old_length + added + 1)));
    if (grown == nullptr) {
        return;
    }
    vor_memcpy(grown + old_length, text, static_cast<vor_uint32>(added));
    grown[old_length + added] = '\0';
    *string = grown;
}

void append(vor_char** string, const vor_char* text)
{
    vor_cfg_str_cat(string, text, vor_strlen(text));
}

// A command under way: its text, and the bytes it will be sent as.
struct Command {
    vor_char* text;
    vor_int32 counted;

    void add(const Literal& literal)
    {
        vor_cfg_str_cat(&text, literal.text, literal.counted);
        counted += literal.counted;
    }

    void add(const vor_char* words)
    {
        append(&text, words);
        counted += vor_strlen(words);
    }
};

void release(vor_char* string)
{
    if (string != nullptr) {
        vor_free(string);
    }
}

bool add_pattern(Command& command, const Literal& opening, const vor_char* pattern)
{
    command.add(opening);
    if (pattern == nullptr) {
        return false;
    }
    command.add(pattern);
    command.add(pattern_closes);
    return true;
}

bool add_subject(Command& command, const VOR_CFG_PROTO& query)
{
    if (query.op == unset_op) {
        return add_pattern(command, pattern_opens, query.pattern);
    }
    command.add(line_opens);
    if (query.line == nullptr) {
        return false;
    }
    command.add(query.line);
    return add_pattern(command, pattern_follows_line, query.pattern);
}

// The bytes between the text and its count are sent too: the terminator, then
// spaces. (A daemon that ends a command at each zero would take zeros as empty commands.)
bool pad(Command& command)
{
    auto* const whole = static_cast<vor_char*>(vor_realloc(command.text, static_cast<vor_uint32>(command.counted)));
    if (whole == nullptr) {
        return false;
    }
    const vor_int32 end = command.text == nullptr ? 0 : vor_strlen(whole);
    whole[end] = '\0';
    vor_memset(whole + end + 1, ' ', static_cast<vor_uint32>(command.counted - end - 1));
    command.text = whole;
    return true;
}

// konfd's answers: only the first two characters count.
struct Answer {
    vor_char text[50];

    vor_int32 receive(vor_int32 fd)
    {
        vor_memset(text, 0, sizeof text);
        return vor_recv(fd, text, sizeof text, 0);
    }

    vor_int32 verdict()
    {
        vor_memset(text + 2, 0, sizeof text - 2);
        return vor_strcmp(text, "-o") == 0 ? 0 : -1;
    }
};

// The fixed commands check their results in 16 bits.
vor_int16 low16(vor_int32 result)
{
    return static_cast<vor_int16>(result);
}

// One of the two fixed commands, whole whatever its length.
class FixedCommand {
public:
    template <class... Words>
    FixedCommand(const vor_char* format, Words... words)
    {
        const int length = std::snprintf(nullptr, 0, format, words...);
        text_ = length < 0 ? nullptr : static_cast<vor_char*>(vor_malloc(static_cast<vor_uint32>(length) + 1));
        if (text_ != nullptr) {
            std::sprintf(text_, format, words...);
        }
    }
    FixedCommand(const FixedCommand&) = delete;
    FixedCommand& operator=(const FixedCommand&) = delete;
    ~FixedCommand() { release(text_); }

    const vor_char* text() const { return text_; }
    vor_int16 send(vor_int32 fd) const { return low16(vor_send(fd, text_, vor_strlen(text_), 0)); }

private:
    vor_char* text_;
};

VOR_UNIX_SOCKET* connect()
{
    return vor_cfg_create_sock_endpoint() == -1 ? nullptr : vor_cfg_get_sock_endpoint();
}

} // namespace

VOR_CFG_PROTO* vor_cfg_proto_init(void)
{
    auto* const query = static_cast<VOR_CFG_PROTO*>(vor_malloc(sizeof(VOR_CFG_PROTO)));
    if (query != nullptr) {
        vor_memset(query, 0, sizeof *query);
        query->path_head.stqh_last = &query->path_head.stqh_first;
    }
    return query;
}

vor_int32 vor_cfg_proto_set_op(VOR_CFG_PROTO* handle, vor_uchar value)
{
    if (handle == nullptr) {
        return -1;
    }
    handle->op = value;
    return 0;
}

vor_int32 vor_cfg_proto_set_pattern_string(VOR_CFG_PROTO* handle, vor_uchar type, vor_char* key, vor_char* value)
{
    constexpr vor_uchar key_and_value = 1;
    constexpr vor_uchar key_only = 2;
    if (handle == nullptr || key == nullptr || (type != key_and_value && type != key_only) ||
        (type == key_and_value && value == nullptr)) {
        return -1;
    }
    append(&handle->pattern, "^");
    append(&handle->pattern, key);
    if (type == key_and_value) {
        append(&handle->pattern, " ");
        append(&handle->pattern, value);
    }
    append(&handle->pattern, "$");
    return 0;
}

vor_int32 vor_cfg_proto_set_line_string(VOR_CFG_PROTO* handle, vor_char* key, vor_char* value)
{
    if (handle == nullptr || key == nullptr || value == nullptr) {
        return -1;
    }
    append(&handle->line, key);
    append(&handle->line, " ");
    append(&handle->line, value);
    return 0;
}

vor_int32 vor_cfg_proto_set_priority_string(VOR_CFG_PROTO* handle, vor_char* value)
{
    if (handle == nullptr) {
        return 0; // unlike its siblings
    }
    if (value == nullptr) {
        return -1;
    }
    append(&handle->priority, value);
    return 0;
}

vor_int32 vor_cfg_proto_append_path_elm(VOR_CFG_PROTO* handle, vor_char* path_key, vor_char* path_value)
{
    if (handle == nullptr || path_key == nullptr || path_value == nullptr) {
        return -1;
    }
    auto* const element = static_cast<VOR_CFG_PROTO_PATH*>(vor_malloc(sizeof(VOR_CFG_PROTO_PATH)));
    if (element == nullptr) {
        return -1;
    }
    vor_memset(element, 0, sizeof *element);
    append(&element->path_elm, path_key);
    append(&element->path_elm, " ");
    append(&element->path_elm, path_value);
    *handle->path_head.stqh_last = element;
    handle->path_head.stqh_last = &element->elm_link.stqe_next;
    return 0;
}

vor_int32 vor_cfg_proto_cleanup(VOR_CFG_PROTO* handle)
{
    if (handle == nullptr) {
        return 0;
    }
    release(handle->line);
    release(handle->priority);
    release(handle->pattern);
    while (handle->path_head.stqh_first != nullptr) {
        VOR_CFG_PROTO_PATH* const element = handle->path_head.stqh_first;
        release(element->path_elm);
        handle->path_head.stqh_first = element->elm_link.stqe_next; // the record itself stays allocated
    }
    vor_free(handle);
    return 0;
}

vor_char* vor_cfg_proto_get_command(VOR_CFG_PROTO* handle, vor_int32* length)
{
    if (handle == nullptr || length == nullptr || handle->op < first_op || handle->op > unset_op) {
        return nullptr;
    }
    Command command{};
    command.add(operations[handle->op - first_op]);
    bool whole = add_subject(command, *handle);
    if (whole) {
        if (handle->priority != nullptr) {
            command.add(priority_opens);
            command.add(handle->priority);
        }
        for (const VOR_CFG_PROTO_PATH* element = handle->path_head.stqh_first; element != nullptr;
             element = element->elm_link.stqe_next) {
            command.add(path_opens);
            if (element->path_elm != nullptr) {
                command.add(element->path_elm);
            }
            command.add(path_closes);
        }
        whole = pad(command);
    }
    if (!whole) {
        release(command.text);
        *length = 0;
        return nullptr;
    }
    *length += command.counted;
    return command.text;
}

vor_int32 vor_konfd_bi_dir_comm(VOR_CFG_PROTO* handle)
{
    const VOR_UNIX_SOCKET* const socket = vor_cfg_get_sock_endpoint();
    if (socket == nullptr) {
        return -1;
    }
    vor_int32 length = 0;
    vor_char* const command = vor_cfg_proto_get_command(handle, &length);
    if (command == nullptr) {
        return -1;
    }
    const vor_int32 sent = vor_send(socket->sock_fd, command, length, 0);
    vor_free(command);
    Answer answer;
    if (sent == -1 || answer.receive(socket->sock_fd) < 1) {
        return -1;
    }
    return answer.verdict();
}

vor_int32 vor_cfg_set_wifi_ssid_password(vor_char* ssid, vor_char* password)
{
    if (ssid == nullptr || password == nullptr) {
        return -1;
    }
    const FixedCommand network(R"(-s -l "ssid %s" -r "^ssid " "interface wlan0")", ssid);
    if (network.text() == nullptr) {
        return -1;
    }
    const VOR_UNIX_SOCKET* const socket = connect();
    if (socket == nullptr) {
        return -1;
    }
    const vor_int32 fd = socket->sock_fd;
    if (network.send(fd) == -1) {
        return -1;
    }
    const FixedCommand secret(R"(-s -l "password %s" -r "^password " "interface wlan0" "ssid %s")", password, ssid);
    Answer answer; // one counts for both commands
    if (secret.text() == nullptr || secret.send(fd) == -1 || low16(answer.receive(fd)) < 1 ||
        low16(vor_cfg_remove_sock_endpoint()) == -1) {
        return -1;
    }
    return answer.verdict();
}

vor_int32 vor_cfg_set_interface_ip(vor_char* interface, vor_char* ip_address)
{
    if (interface == nullptr) {
        return -1;
    }
    // The line names eth0 whatever the interface; only the pattern carries the caller's.
    const FixedCommand select(R"(-d -s -l "interface eth0" -r "interface %s$")", interface);
    if (select.text() == nullptr) {
        return -1;
    }
    std::printf("The konf_command is: %s \n", select.text());
    if (vor_cfg_create_sock_endpoint() == -1) {
        return -1;
    }
    std::puts("The socket created");
    const VOR_UNIX_SOCKET* const socket = vor_cfg_get_sock_endpoint();
    if (socket == nullptr) {
        return -1;
    }
    std::puts("got socket ");
    const vor_int32 fd = socket->sock_fd;
    vor_int16 sent = select.send(fd);
    std::printf("The command to konfd socket sent ret is %d\n", sent);
    if (sent == -1) {
        return -1;
    }
    for (int i = 0; i < 3; ++i) {
        std::fputs("Start to recieve the response", stdout);
    }
    Answer answer;
    if (low16(answer.receive(fd)) < 1) { // received, then ignored
        return -1;
    }
    std::puts("The response from konfd socket received");
    if (ip_address == nullptr) {
        return -1; // compared only now, after one exchange
    }
    const FixedCommand address =
        std::strcmp(ip_address, "dhcp") == 0
            ? FixedCommand(R"(-s -l "ip-address dhcp" -r "^ip-address" "interface %s")", interface)
            : FixedCommand(R"(-s -l "ip-address %s" -r "^ip-address" "interface %s")", ip_address, interface);
    if (address.text() == nullptr) {
        return -1;
    }
    std::printf("The konf_command in vor_cfg_set_interface_ip is interface %s ip-address dhcp\n", interface);
    std::printf("The konf_command is: %s \n", address.text());
    sent = address.send(fd);
    std::printf("The command to konfd socket sent ret is %d\n", sent);
    if (sent == -1) {
        return -1;
    }
    std::fputs("Start to reciev the response", stdout);
    if (low16(answer.receive(fd)) < 1) {
        return -1;
    }
    std::puts("The response from konfd socket received");
    if (low16(vor_cfg_remove_sock_endpoint()) == -1) {
        return -1;
    }
    std::puts("The konfd socket removed");
    return answer.verdict();
}
