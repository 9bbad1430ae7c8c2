#pragma once

// Included by what hidl-gen writes, which uses nothing of it.
