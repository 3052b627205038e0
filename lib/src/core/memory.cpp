// Where large blocks come from: the operating system's pages on Linux (mmap,
// mremap, munmap), malloc elsewhere and for small blocks. This file is the
// library's one use of these POSIX calls.
//
// Fresh pages cost the kernel a clearing of every page on first touch, which
// for a large problem is as much as copying its data once. So freed blocks are
// kept (up to `kept_max` bytes in all, the oldest given back first) and a block
// asked for later takes the smallest kept block that fits it without wasting
// more than half, cut to size: building a problem again after deleting one
// reuses its pages, as malloc does for the blocks it keeps in its heap.
#include "memory.hpp"

#include <cstdint>
#include <cstdlib>
#include <mutex>
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

// Freed blocks kept for reuse, oldest first.
constexpr size_t kept_max = size_t(64) << 20;
constexpr int kept_slots = 16;
struct Kept {
  std::mutex m;
  void *p[kept_slots];
  size_t size[kept_slots];  // whole pages
  int n = 0;
  size_t bytes = 0;
  void drop(int k) {  // forgets slot k, keeping the order of the others
    bytes -= size[k];
    for (int i = k + 1; i < n; ++i) p[i - 1] = p[i], size[i - 1] = size[i];
    --n;
  }
};
Kept &kept() {
  static Kept *k = new Kept;  // never destroyed: blocks may be freed during exit
  return *k;
}

// A kept block cut to `size` bytes (whole pages), or null.
void *reuse(size_t size) {
  Kept &k = kept();
  std::lock_guard<std::mutex> lock(k.m);
  int best = -1;
  for (int i = 0; i < k.n; ++i)
    if (k.size[i] >= size && k.size[i] - size <= size / 2 && (best < 0 || k.size[i] < k.size[best])) best = i;
  if (best < 0) return nullptr;
  void *p = k.p[best];
  const size_t had = k.size[best];
  k.drop(best);
  if (had > size && mremap(p, had, size, 0) == MAP_FAILED) munmap(static_cast<char *>(p) + size, had - size);
  return p;
}

void unmap_or_keep(void *p, size_t size) {
  if (size <= kept_max / 2) {
    void *gone[kept_slots + 1];
    size_t gone_size[kept_slots + 1];
    int ngone = 0;
    {
      Kept &k = kept();
      std::lock_guard<std::mutex> lock(k.m);
      while (k.n > 0 && (k.n == kept_slots || k.bytes + size > kept_max)) {
        gone[ngone] = k.p[0], gone_size[ngone++] = k.size[0];
        k.drop(0);
      }
      k.p[k.n] = p;
      k.size[k.n++] = size;
      k.bytes += size;
    }
    for (int i = 0; i < ngone; ++i) munmap(gone[i], gone_size[i]);
    return;
  }
  munmap(p, size);
}
#endif
}  // namespace

void *block_alloc(size_t bytes) {
  if (bytes == 0) bytes = 1;
#if QRN_PAGES
  if (bytes >= big) {
    if (void *p = reuse(pages(bytes))) return p;
    return map(bytes);
  }
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

void block_free(void *p, size_t bytes, bool keep) noexcept {
  if (p == nullptr) return;
#if QRN_PAGES
  if (bytes >= big) {
    if (keep) unmap_or_keep(p, pages(bytes));
    else munmap(p, pages(bytes));
    return;
  }
#else
  (void)bytes;
#endif
  (void)keep;
  std::free(p);
}

}  // namespace qrn
