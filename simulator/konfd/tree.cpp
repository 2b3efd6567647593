#include "konfd/tree.hpp"

#include <algorithm>

#include <fmt/core.h>

#include "konfd/command.hpp"
#include "text/text.hpp"

namespace vorsim::konfd {
namespace {

constexpr std::size_t most_bytes = 1 << 19; // with 64 bytes of overhead per line
constexpr std::size_t bytes_of_a_line = 64;

void mask(std::vector<Tree::Node>& nodes)
{
    for (Tree::Node& node : nodes) {
        node.line = without_secret(node.line);
        mask(node.children);
    }
}

// By priority, and by age within one.
void insert_in_order(std::vector<Tree::Node>& nodes, Tree::Node node)
{
    nodes.insert(std::ranges::upper_bound(nodes, node.priority, {}, &Tree::Node::priority), std::move(node));
}

} // namespace

std::size_t Tree::Node::size() const
{
    std::size_t size = line.size() + bytes_of_a_line;
    for (const Node& child : children) {
        size += child.size();
    }
    return size;
}

const Tree::Node* Tree::find(const Path& path) const
{
    const Node* node = &root_;
    for (const std::string& word : path) {
        const auto found = std::ranges::find(node->children, word, &Node::line);
        if (found == node->children.end()) {
            return nullptr;
        }
        node = &*found;
    }
    return node;
}

bool Tree::set(const Path& path, const std::string& line, const Matches& matches, std::optional<int> priority)
{
    std::size_t added = line.size() + bytes_of_a_line;
    for (const std::string& word : path) {
        added += word.size() + bytes_of_a_line;
    }
    if (root_.size() + added > most_bytes) {
        return false;
    }

    Node* parent = &root_;
    for (const std::string& word : path) {
        auto found = std::ranges::find(parent->children, word, &Node::line);
        if (found == parent->children.end()) {
            insert_in_order(parent->children, {word, 0, {}});
            found = std::ranges::find(parent->children, word, &Node::line);
        }
        parent = &*found;
    }

    std::vector<Node>& nodes = parent->children;
    Node fresh{line, priority.value_or(0), {}};
    std::optional<std::size_t> replaced;
    for (std::size_t at = 0; at < nodes.size();) {
        Node& node = nodes[at];
        if (node.line != line && !matches(node.line)) {
            ++at;
            continue;
        }
        if (node.line == line) {
            fresh.children = std::move(node.children);
        }
        if (!replaced && node.priority == priority.value_or(node.priority)) {
            replaced = at;
            fresh.priority = node.priority;
        }
        nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(at));
    }
    if (replaced) {
        nodes.insert(nodes.begin() + static_cast<std::ptrdiff_t>(*replaced), std::move(fresh));
    } else {
        insert_in_order(nodes, std::move(fresh));
    }
    return true;
}

void Tree::unset(const Path& path, const Matches& matches)
{
    if (auto* const node = const_cast<Node*>(find(path))) {
        std::erase_if(node->children, [&matches](const Node& child) { return matches(child.line); });
    }
}

std::vector<Tree::Node> Tree::lines(const Path& path, bool show_secrets) const
{
    const Node* const node = find(path);
    std::vector<Node> lines = node != nullptr ? node->children : std::vector<Node>();
    if (!show_secrets) {
        mask(lines);
    }
    return lines;
}

std::string text_of(const std::vector<Tree::Node>& lines, std::size_t depth)
{
    std::string text;
    for (const Tree::Node& node : lines) {
        text += fmt::format("{:{}}{}\n", "", 2 * depth, vor::escaped(node.line)) + text_of(node.children, depth + 1);
    }
    return text;
}

std::string dump_of(const std::vector<Tree::Node>& lines, std::size_t depth)
{
    std::string text;
    for (const Tree::Node& node : lines) {
        const std::string priority = node.priority != 0 ? fmt::format(" -p {}", node.priority) : "";
        text += fmt::format("{:{}}\"{}\"{}\n", "", 2 * depth, node.line, priority) + dump_of(node.children, depth + 1);
    }
    return text;
}

} // namespace vorsim::konfd
