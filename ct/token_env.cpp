#include "ct/token_env.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ct/token_scan.h"
#include "frame/state.h"

namespace {

void releaseTokenState(VMEngine* vm);
const StateSlot<TokenState> tokenSlot(&releaseTokenState);

void releaseTokenState(VMEngine* vm) {
  TokenState& state = tokenSlot(vm);
  vmFree(vm, state.env);
  state.env = nullptr;
  state.envSize = 0;
}

// The largest capacity whose string form a string can hold.
constexpr uint32_t MAX_CAPACITY =
    (UINT32_MAX - 1 - TOKEN_ENV_HEADER) / TOKEN_ENTRY_SIZE / TOKEN_ENV_GROWTH * TOKEN_ENV_GROWTH;

size_t blockBytes(uint64_t slots) {
  return TOKEN_ENV_HEADER + TOKEN_ENTRY_SIZE * slots + 1;  // and the zero byte of a string
}

uint32_t capacityFor(uint64_t tokens) {
  uint64_t rounded = (tokens + TOKEN_ENV_GROWTH - 1) / TOKEN_ENV_GROWTH * TOKEN_ENV_GROWTH;
  return static_cast<uint32_t>(std::clamp<uint64_t>(rounded, TOKEN_ENV_GROWTH, MAX_CAPACITY));
}

// Collects the entries in a block that doubles as it fills, so that a long
// scan allocates a few times and not once per hundred tokens. The capacity
// written at the end is the one that growing by 100 would have reached.
class EnvBuilder {
 public:
  explicit EnvBuilder(VMEngine* vm) : vm_(vm) {}
  EnvBuilder(const EnvBuilder&) = delete;
  EnvBuilder& operator=(const EnvBuilder&) = delete;
  ~EnvBuilder() { vmFree(vm_, block_); }

  bool add(uint32_t start, uint32_t end) {
    if (count_ == slots_ && !grow()) return false;
    unsigned char* entry = block_ + TOKEN_ENV_HEADER + size_t{TOKEN_ENTRY_SIZE} * count_;
    tokenStoreWord(entry, start);
    tokenStoreWord(entry + 4, end);
    count_++;
    return true;
  }

  unsigned char* finish(uint32_t* size) {
    if (!block_ && !grow()) return nullptr;
    uint32_t capacity = capacityFor(count_);
    // Growing left the new slots as they were: the unused ones up to the
    // capacity, and the zero byte behind them, are cleared here.
    unsigned char* unused = block_ + TOKEN_ENV_HEADER + size_t{TOKEN_ENTRY_SIZE} * count_;
    std::memset(unused, 0, size_t{TOKEN_ENTRY_SIZE} * (capacity - count_) + 1);
    tokenStoreWord(block_, count_);
    tokenStoreWord(block_ + 4, capacity);
    *size = TOKEN_ENV_HEADER + TOKEN_ENTRY_SIZE * capacity;
    return std::exchange(block_, nullptr);
  }

 private:
  bool grow() {
    if (slots_ == MAX_CAPACITY) return false;
    uint32_t slots = slots_ == 0 ? TOKEN_ENV_GROWTH : std::min(MAX_CAPACITY, 2 * slots_);
    auto* grown = static_cast<unsigned char*>(vmTryReallocUnfilled(vm_, block_, blockBytes(slots)));
    if (!grown) return false;
    block_ = grown;
    slots_ = slots;
    return true;
  }

  VMEngine* vm_;
  unsigned char* block_ = nullptr;
  uint32_t slots_ = 0;
  uint32_t count_ = 0;
};

}  // namespace

void TokenEnv::setWord(uint64_t offset, uint32_t value) {
  if (offset + 4 <= size_) return tokenStoreWord(bytes_ + offset, value);
  for (uint64_t i = 0; offset + i < size_; i++)
    bytes_[offset + i] = static_cast<unsigned char>(value >> (8 * i));
}

uint32_t TokenEnv::savedLength() const {
  uint64_t length = TOKEN_ENV_HEADER + uint64_t{TOKEN_ENTRY_SIZE} * capacity();
  return static_cast<uint32_t>(std::min<uint64_t>(length, size_));
}

TokenState& tokenState(VMEngine* vm) {
  return tokenSlot(vm);
}

unsigned char* tokenSwapEnv(VMEngine* vm, unsigned char* env, uint32_t size, uint32_t* oldSize) {
  TokenState& state = tokenSlot(vm);
  *oldSize = state.envSize;
  state.envSize = size;
  return std::exchange(state.env, env);
}

ChosenEnv tokenEnvFor(VMEngine* vm, int n, bool writable) {
  Item* variable = paramIsByRef(vm, n) ? paramResolved(vm, n) : nullptr;
  if (itemIsString(variable)) {
    uint32_t size = itemStrLen(variable);
    char* bytes = writable ? itemGetWriteCL(vm, variable, &size) : variable->item.asString.value;
    return {true, true, TokenEnv(reinterpret_cast<unsigned char*>(bytes), size)};
  }
  TokenState& state = tokenSlot(vm);
  return {state.env != nullptr, false, TokenEnv(state.env, state.envSize)};
}

unsigned char* tokenEnvBuild(VMEngine* vm, CtText text, CtText separators, uint32_t skip,
                             uint32_t* size) {
  EnvBuilder builder(vm);
  const CtCharSet separatorSet(separators.bytes, separators.length);
  TokenScan scan(text, separatorSet, skip);
  for (;;) {
    TokenStep token = scan.step();
    if (scan.nothingLeft(token)) break;
    if (!builder.add(token.start, scan.end(token))) return nullptr;
    if (!token.separator) break;
  }
  return builder.finish(size);
}
