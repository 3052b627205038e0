// Where large blocks come from: the operating system's pages on Linux (mmap,
// mremap, munmap), malloc elsewhere and for small blocks. This file is the
// library's one use of these POSIX calls.
#include "memory.hpp"

#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#define QRN_PAGES 1
#endif

namespace qrn {

namespace {
#if QRN_PAGES
constexpr size_t big = size_t(1) << 20;  // blocks of this size or more are pages of their own
constexpr size_t page = 4096;
size_t pages(size_t bytes) { return (bytes + page - 1) & ~(page - 1); }
#endif
}  // namespace

void *block_alloc(size_t bytes) {
  if (bytes == 0) bytes = 1;
#if QRN_PAGES
  if (bytes >= big) {
    void *p = mmap(nullptr, pages(bytes), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) throw std::bad_alloc();
    return p;
  }
#endif
  void *p = std::malloc(bytes);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void *block_realloc(void *p, size_t old_bytes, size_t new_bytes) {
#if QRN_PAGES
  if (old_bytes >= big && new_bytes >= big) {
    void *q = mremap(p, pages(old_bytes), pages(new_bytes), MREMAP_MAYMOVE);
    if (q == MAP_FAILED) throw std::bad_alloc();
    return q;
  }
  if (old_bytes >= big || new_bytes >= big) {
    void *q = block_alloc(new_bytes);
    std::memcpy(q, p, old_bytes < new_bytes ? old_bytes : new_bytes);
    block_free(p, old_bytes);
    return q;
  }
#else
  (void)old_bytes;
#endif
  void *q = std::realloc(p, new_bytes == 0 ? 1 : new_bytes);
  if (q == nullptr) throw std::bad_alloc();
  return q;
}

void block_free(void *p, size_t bytes) noexcept {
  if (p == nullptr) return;
#if QRN_PAGES
  if (bytes >= big) {
    munmap(p, pages(bytes));
    return;
  }
#else
  (void)bytes;
#endif
  std::free(p);
}

}  // namespace qrn
