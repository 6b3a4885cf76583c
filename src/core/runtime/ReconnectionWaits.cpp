#include "ReconnectionWaits.h"

ReconnectionWaits::ReconnectionWaits() = default;

ReconnectionWaits::~ReconnectionWaits() = default;
