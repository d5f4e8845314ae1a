#include "base/object_ref.h"

#include <gtest/gtest.h>

namespace {

struct Counter {
    int value = 0;
};

TEST(ObjectRef, RaisesError91WhereAnEmptyReferenceIsUsed) {
    const base::ObjectRef<Counter> empty;
    EXPECT_TRUE(empty.empty());
    try {
        static_cast<void>(empty->value);
        FAIL() << "an empty reference was used";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), 91);
        EXPECT_EQ(error.description(), "Object variable not set");
    }
    EXPECT_THROW(static_cast<void>(*empty), base::RuntimeError);
}

TEST(ObjectRef, SharesOneObjectBetweenItsCopies) {
    const base::ObjectRef<Counter> first(std::make_shared<Counter>());
    const base::ObjectRef<Counter> second = first;
    first->value = 7;
    EXPECT_EQ(second->value, 7);
    EXPECT_EQ(&*first, &*second);
    EXPECT_EQ(first, second);
    EXPECT_NE(first, base::ObjectRef<Counter>(std::make_shared<Counter>()));
}

TEST(ObjectRef, KeepsTheObjectUntilTheLastReferenceIsGone) {
    auto object = std::make_shared<Counter>();
    const std::weak_ptr<Counter> watch = object;
    base::ObjectRef<Counter> first(std::move(object));
    base::ObjectRef<Counter> second = first;
    first = {};
    EXPECT_FALSE(watch.expired());
    second = {};
    EXPECT_TRUE(watch.expired());
}

}  // namespace
