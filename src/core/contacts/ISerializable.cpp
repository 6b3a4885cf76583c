#include "ISerializable.h"

ISerializable::~ISerializable() = default;
