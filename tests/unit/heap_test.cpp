// The context's heap: small blocks cut from slabs and kept for reuse, a large
// freed block kept for the next large one, blocks that grow out of their size
// class, and arrays whose first elements share their block.
#include <cstring>

#include "vm_fixture.h"

namespace {

TEST_F(VmTest, ReusedBlocksAreZeroedAndGrownBlocksKeepTheirBytes) {
  size_t live = vmHeapLiveBlocks(vm);
  for (size_t size :
       {size_t{1}, size_t{40}, size_t{256}, size_t{257}, size_t{5000}, size_t{3} << 20}) {
    auto* block = static_cast<char*>(vmAlloc(vm, size));
    std::memset(block, 'x', size);
    vmFree(vm, block);
    block = static_cast<char*>(vmAlloc(vm, size));
    EXPECT_EQ(block[0], 0) << size;
    EXPECT_EQ(block[size - 1], 0) << size;
    std::memset(block, 'y', size);
    block = static_cast<char*>(vmRealloc(vm, block, size * 3 + 300));
    EXPECT_EQ(block[0], 'y');
    EXPECT_EQ(block[size - 1], 'y');
    EXPECT_EQ(block[size], 0);
    EXPECT_EQ(block[size * 3 + 299], 0);
    EXPECT_EQ(vmHeapLiveBlocks(vm), live + 1) << size;
    vmFree(vm, block);
    EXPECT_EQ(vmHeapLiveBlocks(vm), live) << size;
  }
}

TEST_F(VmTest, ArraysKeepTheirElementsWhenTheyGrowOutOfTheirBlock) {
  Item* list = array({num(1), str("two"), array({num(3)})});
  for (int i = 4; i <= 40; i++)
    arrayAdd(vm, list, num(i));
  EXPECT_EQ(itemArrayLen(list), 40u);
  EXPECT_EQ(arrayGetNI(list, 1), 1);
  EXPECT_EQ(text(arrayGetItemPtr(list, 2)), "two");
  EXPECT_EQ(arrayGetNI(arrayGetItemPtr(list, 3), 1), 3);
  EXPECT_EQ(arrayGetNI(list, 40), 40);
  arraySize(vm, list, 2);
  EXPECT_EQ(text(arrayGetItemPtr(list, 2)), "two");
}

}  // namespace
