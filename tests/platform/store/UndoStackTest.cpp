#include "platform/qt/UndoStack.h"

#include <gtest/gtest.h>

namespace test {

TEST(UndoStackTest, ChangesAreMadeTakenBackAndMadeAgain)
{
    platform::qt::UndoStack stack;
    int value = 0;
    stack.perform([&] { value = 1; }, [&] { value = 0; });
    stack.perform([&] { value = 2; }, [&] { value = 1; });
    EXPECT_EQ(value, 2);
    EXPECT_TRUE(stack.canUndo());
    EXPECT_FALSE(stack.canRedo());
    stack.undo();
    EXPECT_EQ(value, 1);
    stack.undo();
    EXPECT_EQ(value, 0);
    EXPECT_FALSE(stack.canUndo());
    stack.redo();
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(stack.canRedo());
}

TEST(UndoStackTest, ANewChangeForgetsWhatWasUndone)
{
    platform::qt::UndoStack stack;
    int value = 0;
    stack.perform([&] { value = 1; }, [&] { value = 0; });
    stack.undo();
    stack.perform([&] { value = 5; }, [&] { value = 0; });
    EXPECT_FALSE(stack.canRedo());
    stack.redo();
    EXPECT_EQ(value, 5);
}

TEST(UndoStackTest, AnEmptyStackHasNothingToDo)
{
    platform::qt::UndoStacks stacks;
    const auto stack = stacks.make();
    stack->undo();
    stack->redo();
    EXPECT_FALSE(stack->canUndo());
    EXPECT_FALSE(stack->canRedo());
}

} // namespace test
