// Where large blocks come from: the operating system's pages on Linux (mmap,
// mremap, munmap), malloc elsewhere and for small blocks. This file is the
// library's one use of these POSIX calls.
#include "memory.hpp"

#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#define QRN_PAGES 1
#endif

namespace qrn {

namespace {
#if QRN_PAGES
constexpr size_t big = size_t(128) << 10;  // blocks of this size or more are pages of their own
constexpr size_t huge = size_t(2) << 20;  // and from this size on, huge pages where the system has them
constexpr size_t page = 4096;
size_t pages(size_t bytes) { return (bytes + page - 1) & ~(page - 1); }

// Fresh pages for a block. A block of huge size starts on a huge-page boundary
// and asks for huge pages: filling it then takes one fault per 2 MB instead of
// one per 4 KB, which is most of the cost of storing a large problem.
void *map(size_t bytes) {
  const size_t size = pages(bytes);
  if (size < huge) {  // filled at once in one call rather than by one fault per page
    void *p = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (p == MAP_FAILED) throw std::bad_alloc();
    return p;
  }
  void *raw = mmap(nullptr, size + huge, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) throw std::bad_alloc();
  const auto r = reinterpret_cast<uintptr_t>(raw);
  const uintptr_t q = (r + huge - 1) & ~(uintptr_t(huge) - 1);
  if (q > r) munmap(raw, q - r);
  if (r + huge > q) munmap(reinterpret_cast<void *>(q + size), r + huge - q);
  madvise(reinterpret_cast<void *>(q), size, MADV_HUGEPAGE);
  return reinterpret_cast<void *>(q);
}
#endif
}  // namespace

void *block_alloc(size_t bytes) {
  if (bytes == 0) bytes = 1;
#if QRN_PAGES
  if (bytes >= big) return map(bytes);
#endif
  void *p = std::malloc(bytes);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void *block_realloc(void *p, size_t old_bytes, size_t new_bytes) {
#if QRN_PAGES
  if (old_bytes >= big && new_bytes >= big) {
    // Grow in place when the pages after the block are free; else move the
    // pages (not their contents) into a fresh block.
    if (mremap(p, pages(old_bytes), pages(new_bytes), 0) != MAP_FAILED) return p;
    void *q = map(new_bytes);
    if (mremap(p, pages(old_bytes), pages(old_bytes), MREMAP_MAYMOVE | MREMAP_FIXED, q) == MAP_FAILED) {
      std::memcpy(q, p, old_bytes < new_bytes ? old_bytes : new_bytes);
      munmap(p, pages(old_bytes));
    }
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
