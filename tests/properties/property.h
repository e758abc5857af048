// SPDX-License-Identifier: MIT
/// \file
/// \brief Properties: what holds for whatever values their generators draw (rapidcheck).
///
/// A property that fails tells the smallest values that it was found to fail for, and how to run it again. The cases
/// are the same in every run and few; RC_PARAMS in the environment asks for others or more of them, for example
/// RC_PARAMS="max_success=100000 seed=7".
#ifndef TESTS_PROPERTIES_PROPERTY_H
#define TESTS_PROPERTIES_PROPERTY_H

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <QString>

#include <ostream>

/// How rapidcheck shows a text, which it finds by its type.
inline void showValue(const QString& text, std::ostream& out)
{
    out << '\'' << text.toStdString() << '\'';
}

namespace test
{

/// \return what RC_PARAMS says; without it so many cases, always the same
rc::detail::TestParams parametersOf(int cases);

/// Fails the running test where the result is no success.
void judge(const rc::detail::TestResult& result, const rc::detail::TestParams& parameters);

/// Calls \a property, which draws its values (*rc::gen::...) and says what holds (RC_ASSERT), for so many cases.
template <class Property>
void holds(int cases, Property property)
{
    const rc::detail::TestParams parameters = parametersOf(cases);
    rc::detail::TestMetadata about;
    about.id = testing::UnitTest::GetInstance()->current_test_info()->name();
    judge(rc::detail::checkTestable(property, about, parameters), parameters);
}

/// \return a container of \a most items at most, each drawn from all that \a item has. With the size of the container
///         alone rapidcheck would draw small numbers only, from a range so many hundredths of it.
template <class Container, class Item>
rc::Gen<Container> upTo(int most, const rc::Gen<Item>& item)
{
    return rc::gen::resize(most, rc::gen::container<Container>(rc::gen::resize(rc::kNominalSize, item)));
}

} // namespace test

#endif
