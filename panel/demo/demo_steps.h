// SPDX-License-Identifier: MIT
/// \file
/// \brief What the demo does, in order.
#ifndef PANEL_DEMO_DEMO_STEPS_H
#define PANEL_DEMO_DEMO_STEPS_H

namespace plc
{

struct Listeners;
struct Settings;
class DemoController;
class DemoReport;

/// One station: every area written and read, then a controller that falls silent and comes back.
void showAreasAndSilence(const Settings& settings, const Listeners& listeners, DemoController* controller,
                         DemoReport* report);

/// Two stations, of which one is switched off and on.
void showStations(const Settings& settings, const Listeners& listeners, DemoController* controller,
                  DemoReport* report);

} // namespace plc

#endif
