// Every public header of nox_utils.
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/allocator/StdAllocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/AssertingLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/Condition.h>
#include <nox/utils/Containers.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/OstreamLogger.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/Singleton.h>
#include <nox/utils/String.h>
#include <nox/utils/StringPool.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/Thread.h>
#include <nox/utils/Time.h>
#include <nox/utils/Timer.h>
#include <nox/utils/Uuid.h>
