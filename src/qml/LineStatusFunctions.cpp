#include "LineStatusFunctions.h"

namespace SoftphoneQml {

bool LineStatusFunctions::isIncoming(int status) const
{
    return LineStatus::deserialize(status).isIncoming();
}

bool LineStatusFunctions::isActive(int status) const
{
    return LineStatus::deserialize(status).isActive();
}

bool LineStatusFunctions::isTerminated(int status) const
{
    return LineStatus::deserialize(status).isTerminated();
}

QString LineStatusFunctions::name(int status) const
{
    return LineStatus::deserialize(status).toString();
}

} // namespace SoftphoneQml
