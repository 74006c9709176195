#pragma once
// Depth-first walk over any tree whose children an adapter can reach.

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace ki::algo::tree {

inline constexpr int PRE_ORDER = 0;
inline constexpr int POST_ORDER = 1;

/// Walks a tree depth first and calls a callback on every node. `Adapter` reaches the children
/// of a node through two static functions:
///     static std::size_t child_count(Node node);
///     static Node child_at(Node node, std::size_t index);
/// `TRAVERSAL` is PRE_ORDER (a node before its children) or POST_ORDER (after them).
///
/// The walk keeps its own stack instead of recursing, so a tree nested a hundred thousand
/// levels deep (hostile input) does not overflow the call stack. Inside the callback,
/// `depth()` is the depth of the node being visited, counted from the depth the walk started
/// at (0 for a fresh visitor). `stop()` ends the walk: no further node is visited, in either
/// order.
template <typename Adapter, typename Node, int TRAVERSAL = PRE_ORDER>
class Visitor {
    static_assert(TRAVERSAL == PRE_ORDER || TRAVERSAL == POST_ORDER, "unknown traversal order");

public:
    using Callback = std::function<void(Node)>;

    Visitor() = default;
    /// `maxDepth` < 0 visits every level; otherwise the children of a node are visited only
    /// while its depth is below `maxDepth` (0 visits the root alone).
    explicit Visitor(Callback callback, int maxDepth = -1)
        : m_callback(std::move(callback)), m_maxDepth(maxDepth) {}

    void set_callback(Callback callback) { m_callback = std::move(callback); }
    void set_max_depth(int maxDepth) { m_maxDepth = maxDepth; }
    int max_depth() const { return m_maxDepth; }
    int depth() const { return m_depth; }
    bool is_continue() const { return m_continue; }
    void stop() { m_continue = false; }
    /// Makes a stopped visitor usable for another walk.
    void reset() {
        m_continue = true;
        m_depth = 0;
    }

    void walk_dfs(Node root) {
        if (!root || !m_continue) return;
        const int startDepth = m_depth;
        std::vector<Frame> stack;
        open(stack, root, startDepth);
        while (!stack.empty() && m_continue) {
            Frame& top = stack.back();
            const std::size_t count = top.descend ? Adapter::child_count(top.node) : 0;
            if (top.next < count) {
                const Node child = Adapter::child_at(top.node, top.next++);
                const int childDepth = top.depth + 1;
                // `top` may dangle once open() pushes: everything needed was copied above.
                if (child) open(stack, child, childDepth);
                continue;
            }
            const Frame done = stack.back();
            stack.pop_back();
            if constexpr (TRAVERSAL == POST_ORDER) {
                m_depth = done.depth;
                if (m_callback) m_callback(done.node);
            }
        }
        m_depth = startDepth;
    }

private:
    struct Frame {
        Node node;
        std::size_t next;
        int depth;
        bool descend;
    };

    void open(std::vector<Frame>& stack, Node node, int depth) {
        if constexpr (TRAVERSAL == PRE_ORDER) {
            m_depth = depth;
            if (m_callback) m_callback(node);
            if (!m_continue) return;
        }
        const bool descend = m_maxDepth < 0 || depth < m_maxDepth;
        stack.push_back(Frame{node, 0, depth, descend});
    }

    Callback m_callback;
    int m_depth = 0;
    int m_maxDepth = -1;
    bool m_continue = true;
};

}  // namespace ki::algo::tree
