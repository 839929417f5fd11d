#pragma once
// Links between rows of a data set: one parent to many children, and one row to one row.
// Rows are referred to by address; the data set that owns them keeps them alive.

#include <algorithm>
#include <map>
#include <vector>

namespace Lumivale::DataModule {

// One-to-many relation: each child has at most one parent; children keep the order they were linked in.
template <typename Parent, typename Child>
class OneToManyRelation {
public:
    // Put child under parent; a child under another parent moves.
    void Link(Parent& parent, Child& child) {
        Unlink(child);
        parent_of_[&child] = &parent;
        children_of_[&parent].push_back(&child);
    }
    // Take child away from its parent (nothing happens when it has none).
    void Unlink(const Child& child) {
        const auto found = parent_of_.find(&child);
        if (found == parent_of_.end()) return;
        std::vector<Child*>& siblings = children_of_[found->second];
        siblings.erase(std::find(siblings.begin(), siblings.end(), &child));
        parent_of_.erase(found);
    }
    // The parent of child, or nullptr.
    Parent* ParentOf(const Child& child) const {
        const auto found = parent_of_.find(&child);
        return found == parent_of_.end() ? nullptr : found->second;
    }
    // The children of parent in link order.
    std::vector<Child*> ChildrenOf(const Parent& parent) const {
        const auto found = children_of_.find(&parent);
        return found == children_of_.end() ? std::vector<Child*>{} : found->second;
    }
    // The first child linked to parent, or nullptr.
    Child* FirstChildOf(const Parent& parent) const {
        const auto found = children_of_.find(&parent);
        return found == children_of_.end() || found->second.empty() ? nullptr : found->second.front();
    }

private:
    std::map<const Child*, Parent*> parent_of_;
    std::map<const Parent*, std::vector<Child*>> children_of_;
};

// One-to-one relation: linking a pair releases both rows' previous partners.
template <typename Left, typename Right>
class OneToOneRelation {
public:
    // Pair left with right.
    void Link(Left& left, Right& right) {
        UnlinkLeft(left);
        UnlinkRight(right);
        right_of_[&left] = &right;
        left_of_[&right] = &left;
    }
    // Release left's partner, if any.
    void UnlinkLeft(const Left& left) {
        const auto found = right_of_.find(&left);
        if (found == right_of_.end()) return;
        left_of_.erase(found->second);
        right_of_.erase(found);
    }
    // Release right's partner, if any.
    void UnlinkRight(const Right& right) {
        const auto found = left_of_.find(&right);
        if (found == left_of_.end()) return;
        right_of_.erase(found->second);
        left_of_.erase(found);
    }
    // The partner of left, or nullptr.
    Right* RightOf(const Left& left) const {
        const auto found = right_of_.find(&left);
        return found == right_of_.end() ? nullptr : found->second;
    }
    // The partner of right, or nullptr.
    Left* LeftOf(const Right& right) const {
        const auto found = left_of_.find(&right);
        return found == left_of_.end() ? nullptr : found->second;
    }

private:
    std::map<const Left*, Right*> right_of_;
    std::map<const Right*, Left*> left_of_;
};

}  // namespace Lumivale::DataModule
