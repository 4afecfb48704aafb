#ifndef VXCLASSIFIER_VXCLASSIFIER_H
#define VXCLASSIFIER_VXCLASSIFIER_H

// The whole library.
#include <vxclassifier/class_data_generator.h>
#include <vxclassifier/classifier.h>
#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_data_provider.h>
#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_knn.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/feature_score.h>
#include <vxclassifier/feature_vector.h>
#include <vxclassifier/pattern_distance_metric.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/archive_direction.h>
#include <vxclassifier/platform/archive_file.h>
#include <vxclassifier/platform/archive_handle.h>
#include <vxclassifier/platform/archive_vector.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/diag_object.h>
#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/interlocked.h>
#include <vxclassifier/platform/nm_matrix.h>
#include <vxclassifier/platform/pair.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/random.h>
#include <vxclassifier/platform/range.h>
#include <vxclassifier/platform/rep_base.h>
#include <vxclassifier/platform/status.h>
#include <vxclassifier/platform/text.h>
#include <vxclassifier/rule.h>
#include <vxclassifier/rule_table.h>
#include <vxclassifier/total_data_generator.h>

#endif
