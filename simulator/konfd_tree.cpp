#include "konfd_tree.hpp"

#include <algorithm>

#include "konfd_command.hpp"
#include "text.hpp"

namespace vorsim::konfd {
namespace {

constexpr std::size_t most_bytes = 1 << 19; // lines with 64 bytes each on top
constexpr std::size_t bytes_of_a_line = 64;

std::string shown(const std::string& line, bool show_secrets)
{
    return show_secrets ? line : without_secret(line);
}

} // namespace

std::size_t Tree::Node::size() const
{
    std::size_t size = line.size() + bytes_of_a_line;
    for (const Node& node : under) {
        size += node.size();
    }
    return size;
}

const Tree::Node* Tree::find(const Path& path) const
{
    const Node* node = &root_;
    for (const std::string& word : path) {
        const auto found = std::ranges::find(node->under, word, &Node::line);
        if (found == node->under.end()) {
            return nullptr;
        }
        node = &*found;
    }
    return node;
}

/* By priority, and by age within one. */
void Tree::add_in_order(std::vector<Node>& nodes, Node node)
{
    nodes.insert(std::ranges::upper_bound(nodes, node.priority, {}, &Node::priority), std::move(node));
}

bool Tree::set(const Path& path, const std::string& line, const Fits& fits, std::optional<int> priority)
{
    std::size_t added = line.size() + bytes_of_a_line;
    for (const std::string& word : path) {
        added += word.size() + bytes_of_a_line;
    }
    if (root_.size() + added > most_bytes) {
        return false;
    }

    Node* place = &root_;
    for (const std::string& word : path) {
        auto found = std::ranges::find(place->under, word, &Node::line);
        if (found == place->under.end()) {
            add_in_order(place->under, {word, 0, {}});
            found = std::ranges::find(place->under, word, &Node::line);
        }
        place = &*found;
    }

    std::vector<Node>& nodes = place->under;
    Node fresh{line, priority.value_or(0), {}};
    std::optional<std::size_t> replaced;
    for (std::size_t at = 0; at < nodes.size();) {
        Node& node = nodes[at];
        if (node.line != line && !fits(node.line)) {
            ++at;
            continue;
        }
        if (node.line == line) {
            fresh.under = std::move(node.under);
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
        add_in_order(nodes, std::move(fresh));
    }
    return true;
}

void Tree::unset(const Path& path, const Fits& fits)
{
    if (auto* const node = const_cast<Node*>(find(path))) {
        std::erase_if(node->under, [&fits](const Node& under) { return fits(under.line); });
    }
}

bool Tree::has(const Path& path, const Fits& fits) const
{
    const Node* const node = find(path);
    return node != nullptr && std::ranges::any_of(node->under, fits, &Node::line);
}

void Tree::add_text(std::string& text, const Node& node, std::size_t depth, bool show_secrets)
{
    for (const Node& under : node.under) {
        text += std::string(2 * depth, ' ') + escaped(shown(under.line, show_secrets)) + "\n";
        add_text(text, under, depth + 1, show_secrets);
    }
}

std::string Tree::text(const Path& path, bool show_secrets) const
{
    std::string text;
    if (const Node* const node = find(path)) {
        add_text(text, *node, 0, show_secrets);
    }
    return text;
}

Json Tree::json_under(const Node& node, bool show_secrets)
{
    Json lines = Json::array();
    for (const Node& under : node.under) {
        lines.push_back({{"line", shown(under.line, show_secrets)},
                         {"priority", under.priority},
                         {"under", json_under(under, show_secrets)}});
    }
    return lines;
}

Json Tree::json(bool show_secrets) const
{
    return json_under(root_, show_secrets);
}

} // namespace vorsim::konfd
