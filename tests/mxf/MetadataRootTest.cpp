#include <gtest/gtest.h>

#include "mxf/metadata/factories/MXFSetFactory.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "mxf/metadata/model/MetadataObject.h"
#include "support/Failure.h"
#include "support/Octets.h"

namespace {

class Set : public MetadataObject {
    BRYX_SET(Set, MetadataObject, "060e2b34.02530101.0f000000.00000000");

public:
    using MetadataRoot::releaseOwnership;
    using MetadataRoot::takeOwnership;
    void swap(const std::shared_ptr<Set>& removed, const std::shared_ptr<Set>& added) { swapOwnership(removed, added); }
};

} // namespace

TEST(MetadataRoot, Ownership) {
    const auto root = Set::create();
    const auto a = Set::create();
    const auto b = Set::create();
    EXPECT_NE(root->getInstanceUID(), a->getInstanceUID());
    EXPECT_NE(BRYXDefaultUIDGenerator().generateUID(), BRYXDefaultUIDGenerator().generateUID());
    root->takeOwnership(a);
    a->takeOwnership(b);
    EXPECT_EQ(b->getTopOwner(), root);
    EXPECT_EQ(root->getTopOwner(), root);
    EXPECT_EQ(failure([&] { root->takeOwnership(b); }), "object is not owned");
    EXPECT_EQ(failure([&] { b->takeOwnership(root); }), "object does not own this");
    EXPECT_EQ(failure([&] { root->takeOwnership(root); }), "object does not own this");
    EXPECT_EQ(failure([&] { root->releaseOwnership(b); }), "current owner is this");
    const auto c = Set::create();
    EXPECT_EQ(failure([&] { root->swap(a, b); }), "object is not owned");
    EXPECT_EQ(a->getOwner(), root); // nothing has changed
    root->swap(a, c);
    EXPECT_FALSE(a->hasOwner());
    EXPECT_EQ(c->getOwner(), root);
    class Loose : public Set {};
    Loose loose;
    EXPECT_THROW(loose.takeOwnership(a), std::bad_weak_ptr);
    auto owner = Set::create();
    owner->takeOwnership(a);
    owner.reset();
    EXPECT_FALSE(a->hasOwner()); // the owner is gone
    root->takeOwnership(a);
}

TEST(MetadataRoot, DarkPropertiesAndOptionalValues) {
    const auto set = Set::create();
    const auto target = Set::create();
    const KLVKey key = keys::item;
    KLVKey otherVersion = key;
    otherVersion[7] = 9;
    EXPECT_EQ(failure([&] { set->getDarkProperty(key); }), "property is present");
    EXPECT_EQ(failure([&] { set->isReferenceDarkProperty(key); }), "property is present");
    set->setDarkProperty(key, {1, 2});
    EXPECT_EQ(set->getDarkProperty(otherVersion), (std::vector<std::uint8_t>{1, 2}));
    set->setReferenceDarkProperty(key, target);
    EXPECT_EQ(target->getOwner(), set);
    EXPECT_TRUE(set->isReferenceDarkProperty(key));
    EXPECT_EQ(failure([&] { set->getDarkProperty(key); }), "property is a non-reference value");
    EXPECT_EQ(failure([&] { target->setReferenceDarkProperty(key, set); }), "object does not own this");
    set->setDarkProperty(key, {3});
    EXPECT_FALSE(target->hasOwner());
    set->setReferenceDarkProperty(key, target);
    set->removeDarkProperty(key);
    EXPECT_FALSE(target->hasOwner());
    EXPECT_EQ(set->beginDarkProperties(), set->endDarkProperties());
    EXPECT_EQ(failure([&] { set->getStartStreampos(); }), "streampos is present");
    EXPECT_EQ(failure([&] { set->getGenerationUID(); }), "MetadataObject.generationUID is present");
}
