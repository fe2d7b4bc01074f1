#include "Model/Records/ProcessIdentity.h"

#include <atomic>
#include <utility>

namespace vantoro {

struct SharedProcessIdentity::Record {
    ProcessIdentity identity;
    std::atomic<std::uint32_t> owners{1};
};

SharedProcessIdentity::SharedProcessIdentity(ProcessIdentity identity)
    : record_(new Record{.identity = std::move(identity)}) {}

SharedProcessIdentity::SharedProcessIdentity(const SharedProcessIdentity& other) noexcept : record_(other.record_) {
    if (record_ != nullptr)
        record_->owners.fetch_add(1, std::memory_order_relaxed);
}

SharedProcessIdentity& SharedProcessIdentity::operator=(const SharedProcessIdentity& other) noexcept {
    SharedProcessIdentity copy(other);
    std::swap(record_, copy.record_);
    return *this;
}

SharedProcessIdentity& SharedProcessIdentity::operator=(SharedProcessIdentity&& other) noexcept {
    std::swap(record_, other.record_);
    return *this;
}

SharedProcessIdentity::~SharedProcessIdentity() {
    if (record_ != nullptr && record_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete record_;
}

const ProcessIdentity& SharedProcessIdentity::operator*() const {
    static const ProcessIdentity none;
    return record_ != nullptr ? record_->identity : none;
}

bool SharedProcessIdentity::operator==(const SharedProcessIdentity& other) const {
    return record_ == other.record_ || **this == *other;
}

} // namespace vantoro
