#pragma once

// The "batteries" category on Linux: the machine's own batteries among the power supplies.
//
// Each /sys/class/power_supply/<supply> of type "Battery" counts, unless its scope is
// "Device": such a battery powers a peripheral (a wireless mouse) and not the machine.
// Mains adapters ("Mains") and USB-C sources ("USB") are no batteries.
//   name                      model_name, else the supply's name ("BAT0")
//   serialNumber              serial_number (blanks inside kept)
//   capacity                  capacity (%), else energy_now ÷ energy_full or
//                             charge_now ÷ charge_full, else 0
//   estimatedChargeRemaining  minutes to empty while discharging: time_to_empty_now
//                             (seconds), else energy_now (µWh) ÷ power_now (µW), else
//                             charge_now (µAh) ÷ current_now (µA); 0 otherwise
// Batteries report either the energy_* form or the charge_* form. An attribute that is
// empty, negative (but current_now, which some machines report negative while
// discharging), no number or beyond what a battery can be counts as missing.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxBatteries(SystemSource& source);

}  // namespace tov
