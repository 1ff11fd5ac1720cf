/* The plug-in header compiled as C: the sizes a C plug-in sees. */
#include "plugins/quillotone_plugin.h"

#include <stddef.h>

size_t qv_c_record_sizes[] = {
    sizeof(qv_log_record),   sizeof(qv_query_record),        sizeof(qv_batch_end_record),
    sizeof(qv_stream_facts), sizeof(qv_open_record),         sizeof(qv_audio_format),
    sizeof(qv_audio_block),  sizeof(qv_begin_record),        sizeof(qv_encoder_begin_record),
    sizeof(qv_encoder_end_record), sizeof(qv_after_record),
};
