// SPDX-License-Identifier: MIT
/// \file
/// \brief The lists of examples/, and what their variables must show, worked out from the controller's
/// memory.
///
/// Nothing here uses the panel's own code for lists, addresses and types.
#ifndef TESTS_PANEL_LISTED_VALUES_H
#define TESTS_PANEL_LISTED_VALUES_H

#include "simulator/simulated_controller.h"

#include <QByteArray>
#include <QString>

#include <random>
#include <string>
#include <vector>

namespace test
{

/// \return the path of a file of examples/
QString exampleFile(const char* name);

/// A line of a list.
struct ListedLine {
    std::string name;
    int area = 0;
    int element = 0;
    int count = 1; ///< of values; of a text's characters
    std::string type;

    int elements() const; ///< elements of the area that the values take
};

/// \return the lines of thousand.csv in their order
std::vector<ListedLine> linesOfThousand();

/// \return the elements as the controller's memory has them now
std::vector<quint32> elementsInController(simulator::SimulatedController& controller, const ListedLine& line);

/// \return what a person must see of these elements
std::string expectedText(const ListedLine& line, const std::vector<quint32>& elements);

/// Puts another value into the controller's memory, behind a text's last character too.
void changeInController(simulator::SimulatedController& controller, const ListedLine& line,
                        std::mt19937* random);

} // namespace test

#endif
