#pragma once

#include "snmp_pp/ctr64.h"
#include "snmp_pp/gauge.h"
#include "snmp_pp/integer.h"
#include "snmp_pp/octet.h"
#include "snmp_pp/oid.h"
#include "snmp_pp/smival.h"
#include "snmp_pp/vb.h"
