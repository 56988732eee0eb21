#pragma once
/// The intrusive list that holds every collection of the store.
///
/// A list is a ring of links: each record embeds one `config_list_node_t` named `link`, the head
/// is one more, and an empty head points at itself. Records keep their address for life, which is
/// what lets a policy's entry and a usage record point at each other.

#include <cstddef>

/// A list's head, or a record's place in a list.
struct config_list_node_t {
    config_list_node_t *next;
    config_list_node_t *prev;
};

inline void list_init(config_list_node_t *head) {
    head->next = head->prev = head;
}

inline bool list_is_empty(const config_list_node_t *head) {
    return head->next == head;
}

inline void list_insert_after(config_list_node_t *place, config_list_node_t *node) {
    node->next = place->next;
    node->prev = place;
    place->next->prev = node;
    place->next = node;
}

/// Links a node in as the last of its list: profiles, devices, weekday entries, policies.
inline void list_append(config_list_node_t *head, config_list_node_t *node) {
    list_insert_after(head->prev, node);
}

/// Links a node in as the first of its list: usage records, policy entries, global statistics.
inline void list_push_front(config_list_node_t *head, config_list_node_t *node) {
    list_insert_after(head, node);
}

/// Takes a node out of its list and clears its two pointers, so that a stale use shows at once.
inline void list_unlink(config_list_node_t *node) {
    node->prev->next = node->next;
    node->next->prev = node->prev;
    node->next = node->prev = nullptr;
}

/// The record that embeds a node: the one place that computes an offset.
template <typename Record>
Record *list_record(config_list_node_t *node) {
    return reinterpret_cast<Record *>(reinterpret_cast<char *>(node) - offsetof(Record, link));
}

/// A list seen as a range of its records, first to last.
///
/// The walk reads a record's successor before it hands the record out, so a loop may unlink and
/// free the record that it is looking at (and no other).
template <typename Record>
class list_range {
public:
    class iterator {
    public:
        explicit iterator(config_list_node_t *node) : node_(node), next_(node->next) {}
        Record &operator*() const { return *list_record<Record>(node_); }
        iterator &operator++() {
            node_ = next_;
            next_ = node_->next;
            return *this;
        }
        bool operator==(const iterator &other) const { return node_ == other.node_; }

    private:
        config_list_node_t *node_;
        config_list_node_t *next_;
    };

    explicit list_range(config_list_node_t *head) : head_(head) {}
    iterator begin() const { return iterator(head_->next); }
    iterator end() const { return iterator(head_); }

private:
    config_list_node_t *head_;
};
