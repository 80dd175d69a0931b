/* The two groups of statuses as a C program sees them. */
#include <KXCameraControl/KXCameraControl.h>

int isNotApplicableInC(uint32_t status)
{
    return KX_IS_NOT_APPLICABLE(status);
}

int isLineFailureInC(uint32_t status)
{
    return KX_IS_LINE_FAILURE(status);
}
