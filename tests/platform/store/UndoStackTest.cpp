#include "platform/qt/UndoStack.h"

#include <gtest/gtest.h>

namespace test {

TEST(UndoStackTest, ChangesAreTakenBackAndMadeAgain)
{
    platform::qt::UndoStack stack;
    int value = 2;
    stack.remember(
        "one", [&] { value = 1; }, [&] { value = 0; });
    stack.remember(
        "two", [&] { value = 2; }, [&] { value = 1; });
    EXPECT_EQ(value, 2);
    EXPECT_EQ(stack.undoName(), "two");
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
    int value = 1;
    stack.remember(
        "one", [&] { value = 1; }, [&] { value = 0; });
    stack.undo();
    stack.remember(
        "five", [&] { value = 5; }, [&] { value = 0; });
    EXPECT_FALSE(stack.canRedo());
    EXPECT_EQ(stack.undoName(), "five");
    stack.redo();
    EXPECT_EQ(value, 0);
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
