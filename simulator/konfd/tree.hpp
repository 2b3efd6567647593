// tree.hpp: the stored configuration, lines under lines, kept in order.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vorsim::konfd {

using Path = std::vector<std::string>;
using Matches = std::function<bool(const std::string& line)>;

class Tree {
public:
    struct Node {
        std::string line{};
        int priority = 0;
        std::vector<Node> children{};

        std::size_t size() const;
    };

    // Puts the line under the path, which is created where missing, in place of the lines that match. The line itself,
    // when already there, keeps what is under it. False when the tree is full.
    bool set(const Path& path, const std::string& line, const Matches& matches, std::optional<int> priority);
    // Removes the matching lines under the path, with all under them.
    void unset(const Path& path, const Matches& matches);
    // Null: there is no such path.
    const Node* find(const Path& path) const;

    // The lines under the path, and those under them, secrets masked unless they are to be shown.
    std::vector<Node> lines(const Path& path, bool show_secrets) const;

private:
    Node root_;
};

// Lines of text for people, two blanks deeper for each level.
std::string text_of(const std::vector<Tree::Node>& lines, std::size_t depth = 0);
// The same as -s -l takes them: quoted, byte for byte, with a priority other than 0.
std::string dump_of(const std::vector<Tree::Node>& lines, std::size_t depth = 0);

} // namespace vorsim::konfd
