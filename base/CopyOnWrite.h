#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace ZkMobileBackup {

/// A value that copies share until one of them is changed. Copies may live on different threads; one handle is, like
/// any plain value, used by one thread at a time. A default-made handle reads as a default-made T and owns nothing.
template <typename T>
class CopyOnWrite {
public:
    CopyOnWrite() = default;
    explicit CopyOnWrite(T value) : node_(new Node(std::move(value))) {}
    CopyOnWrite(const CopyOnWrite& other) noexcept : node_(other.node_) {
        if (node_ != nullptr) node_->owners.fetch_add(1, std::memory_order_relaxed);
    }
    CopyOnWrite(CopyOnWrite&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    CopyOnWrite& operator=(CopyOnWrite other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~CopyOnWrite() {
        if (node_ != nullptr && node_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete node_;
    }

    /// The shared value, for reading.
    const T& get() const {
        static const T none{};
        return node_ != nullptr ? node_->value : none;
    }
    const T& operator*() const { return get(); }
    const T* operator->() const { return &get(); }

    /// The value for changing: this handle's own from here on.
    T& edit() {
        if (node_ == nullptr) {
            node_ = new Node(T{});
        } else if (node_->owners.load(std::memory_order_acquire) != 1) {
            *this = CopyOnWrite(node_->value);
        }
        return node_->value;
    }

private:
    struct Node {
        explicit Node(T v) : value(std::move(v)) {}
        std::atomic<std::uint32_t> owners{1};
        T value;
    };
    Node* node_ = nullptr;
};

}  // namespace ZkMobileBackup
