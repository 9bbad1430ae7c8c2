#pragma once

#include <string>

namespace quen::host {

/** Sets the text of a key of NSCam::ATMsEventMgr, in place of any earlier one. Any thread. */
void setEventString(std::string const& key, std::string const& value);

/** Removes a key of NSCam::ATMsEventMgr. Any thread. */
void clearEventString(std::string const& key);

}  // namespace quen::host
