// The joint's list of joint parameters.
#include "OvJointParams.h"
#include "OvModifiers.h"

OvPoserJointParam *OvPoserJoint::findJointParam(const QString &name) const {
    for (const auto &param : m_params)
        if (param->getName() == name)
            return param.get();
    return nullptr;
}

void OvPoserJoint::addJointParam(OvPoserJointParam *param) {
    if (param)
        m_params.emplace_back(param);
}
