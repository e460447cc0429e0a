#include "ProgressIndicator.h"

void ProgressIndicator::setMaxValue(double value)
{
    m_maxValue = value;
    emit maxValueChanged(value);
}

void ProgressIndicator::setDoubleValue(double value)
{
    m_doubleValue = value;
    emit doubleValueChanged(value);
}

void ProgressIndicator::setIndeterminate(bool indeterminate)
{
    m_indeterminate = indeterminate;
    emit indeterminateChanged(indeterminate);
}

void ProgressIndicator::startAnimation()
{
    m_animating = true;
    emit animatingChanged(true);
}

void ProgressIndicator::stopAnimation()
{
    m_animating = false;
    emit animatingChanged(false);
}
