// Large blocks of plain data, and Pod<T>, a growable array of them.
//
// Blocks of 128 KB or more come straight from the operating system (one
// place, memory.cpp), so that growing an array can move its pages instead of
// copying them; a freed one is kept for reuse up to 64 MB in all (the rest goes
// back to the system at once), as malloc keeps its heap. Small blocks come
// from malloc. Pod<T> does not initialize what it grows by: the
// caller writes every element it adds (resize_uninit), or asks for a fill.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace qrn {

// Each throws std::bad_alloc when memory runs out. A block is freed with the
// size it was allocated (or last reallocated) with.
void *block_alloc(size_t bytes);
void *block_realloc(void *p, size_t old_bytes, size_t new_bytes);
// With keep false the memory goes back to the system at once, not kept for
// reuse (memory.cpp): for scratch that would otherwise stay resident.
void block_free(void *p, size_t bytes, bool keep = true) noexcept;

template <class T>
class Pod {
  static_assert(std::is_trivially_copyable<T>::value, "Pod holds plain data only");

 public:
  Pod() = default;
  explicit Pod(size_t n, T fill) { resize(n, fill); }
  Pod(const Pod &o) {
    reserve(o.n_);
    if (o.n_ > 0) std::memcpy(p_, o.p_, o.n_ * sizeof(T));
    n_ = o.n_;
  }
  Pod(Pod &&o) noexcept { swap(o); }
  Pod &operator=(const Pod &o) {
    if (this != &o) {
      Pod copy(o);
      swap(copy);
    }
    return *this;
  }
  Pod &operator=(Pod &&o) noexcept {
    Pod gone(std::move(o));
    swap(gone);
    return *this;
  }
  ~Pod() { release(); }

  void swap(Pod &o) noexcept {
    std::swap(p_, o.p_);
    std::swap(n_, o.n_);
    std::swap(cap_, o.cap_);
  }
  size_t size() const { return n_; }
  bool empty() const { return n_ == 0; }
  size_t capacity() const { return cap_; }
  T *data() { return p_; }
  const T *data() const { return p_; }
  T &operator[](size_t k) { return p_[k]; }
  const T &operator[](size_t k) const { return p_[k]; }
  T *begin() { return p_; }
  T *end() { return p_ + n_; }
  const T *begin() const { return p_; }
  const T *end() const { return p_ + n_; }

  // Room for n elements without moving.
  void reserve(size_t n) {
    if (n <= cap_) return;
    p_ = static_cast<T *>(p_ == nullptr ? block_alloc(n * sizeof(T))
                                        : block_realloc(p_, cap_ * sizeof(T), n * sizeof(T)));
    cap_ = n;
  }
  // Size n; elements past the old size are left for the caller to write.
  // Growing by small steps costs amortized constant time per element.
  void resize_uninit(size_t n) {
    if (n > cap_) reserve(n < cap_ + cap_ / 2 ? cap_ + cap_ / 2 : n);
    n_ = n;
  }
  void resize(size_t n, T fill) {
    size_t old = n_;
    resize_uninit(n);
    for (size_t k = old; k < n; ++k) p_[k] = fill;
  }
  void push_back(T v) {
    resize_uninit(n_ + 1);
    p_[n_ - 1] = v;
  }
  void clear() { n_ = 0; }
  // Gives back the memory (keep false: to the system at once; see block_free).
  void release(bool keep = true) noexcept {
    if (p_ != nullptr) block_free(p_, cap_ * sizeof(T), keep);
    p_ = nullptr;
    n_ = cap_ = 0;
  }

 private:
  T *p_ = nullptr;
  size_t n_ = 0, cap_ = 0;
};

}  // namespace qrn
