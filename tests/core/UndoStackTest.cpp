#include "undo/UndoMenuTitles.h"
#include "undo/UndoStack.h"

#include <gtest/gtest.h>

using namespace recorder;

namespace {

// A slider value standing in for a whole project: equality is all the stack needs.
using Stack = UndoStack<int>;

void drag(Stack& stack, const std::string& label, std::initializer_list<int> values) {
    for (int value : values) stack.pushCoalescing(value, label);
}

} // namespace

TEST(UndoStack, PushingAnEqualValueLeavesNoTraceAndKeepsTheFuture) {
    Stack stack(1);
    stack.push(2, "Padding");
    stack.undo();
    stack.push(1, "Corners");
    stack.pushCoalescing(1, "Corners");
    EXPECT_TRUE(stack.past().empty());
    ASSERT_EQ(stack.future().size(), 1u);
    EXPECT_EQ(stack.redoLabel(), "Padding");
}

TEST(UndoStack, ADragThroughTenValuesIsOneStep) {
    Stack stack(0);
    drag(stack, "Padding", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    ASSERT_EQ(stack.past().size(), 1u);
    EXPECT_EQ(stack.past().back(), (Stack::Entry{0, "Padding"}));
    EXPECT_TRUE(stack.undo());
    EXPECT_EQ(stack.current(), 0);
    EXPECT_TRUE(stack.redo());
    EXPECT_EQ(stack.current(), 10);
    EXPECT_FALSE(stack.canRedo());
}

TEST(UndoStack, EndCoalescingSeparatesTwoDragsOfOneControl) {
    Stack stack(0);
    drag(stack, "Padding", {1, 2, 3});
    stack.endCoalescing();
    drag(stack, "Padding", {4, 5});
    ASSERT_EQ(stack.past().size(), 2u);
    EXPECT_EQ(stack.past()[1].value, 3);
}

TEST(UndoStack, CoalescingWithADifferentLabelStartsAnEntryAndKeepsTheFlag) {
    Stack stack(0);
    drag(stack, "Padding", {1, 2});
    drag(stack, "Corners", {3, 4});
    ASSERT_EQ(stack.past().size(), 2u);
    EXPECT_EQ(stack.past()[1], (Stack::Entry{2, "Corners"}));
    EXPECT_TRUE(stack.lastPushWasCoalescing());
}

TEST(UndoStack, UndoClearsTheFlagSoTheSameDragMakesAFreshEntryAndDropsTheFuture) {
    Stack stack(0);
    drag(stack, "Padding", {1, 2});
    stack.undo();
    EXPECT_FALSE(stack.lastPushWasCoalescing());
    drag(stack, "Padding", {5});
    ASSERT_EQ(stack.past().size(), 1u);
    EXPECT_EQ(stack.past()[0].value, 0);
    EXPECT_FALSE(stack.canRedo());
}

TEST(UndoStack, APlainPushBetweenDragsIsMergedIntoByTheNextDragOfItsLabel) {
    Stack stack(0);
    drag(stack, "Padding", {1});
    stack.push(2, "Corners");
    EXPECT_TRUE(stack.lastPushWasCoalescing()) << "a plain push doesn't touch the flag";
    drag(stack, "Corners", {3, 4});
    ASSERT_EQ(stack.past().size(), 2u);
    EXPECT_EQ(stack.past()[1], (Stack::Entry{1, "Corners"}));
    EXPECT_EQ(stack.current(), 4);
}

TEST(UndoStack, UndoAndRedoOnEmptySidesDoNothing) {
    Stack stack(7);
    EXPECT_FALSE(stack.undo());
    EXPECT_FALSE(stack.redo());
    EXPECT_EQ(stack.current(), 7);
    EXPECT_TRUE(stack.past().empty());
    EXPECT_TRUE(stack.future().empty());
}

TEST(UndoStack, AnEditAfterUndoEmptiesTheFuture) {
    Stack stack(0);
    stack.push(1, "Trim");
    stack.push(2, "Cut");
    stack.undo();
    stack.push(3, "Zoom");
    EXPECT_FALSE(stack.canRedo());
    EXPECT_EQ(stack.undoLabel(), "Zoom");
}

TEST(UndoStack, UndoAndRedoCarryTheLabelAcross) {
    Stack stack(0);
    stack.push(1, "Trim");
    stack.undo();
    EXPECT_EQ(stack.future().back(), (Stack::Entry{1, "Trim"}));
    stack.redo();
    EXPECT_EQ(stack.past().back(), (Stack::Entry{0, "Trim"}));
}

TEST(UndoMenuTitles, NameTheUndoStepButNeverTheRedoStep) {
    Stack stack(0);
    EXPECT_EQ(undoMenuItemTitle(stack), "Undo");
    stack.push(1, "Apply style");
    EXPECT_EQ(undoMenuItemTitle(stack), "Undo Apply style");
    stack.undo();
    EXPECT_EQ(undoMenuItemTitle(stack), "Undo");
    EXPECT_EQ(redoMenuItemTitle(), "Redo");
}
