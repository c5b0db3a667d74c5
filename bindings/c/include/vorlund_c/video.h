/**
 * \file
 * Pictures and video: streams of pixels that vorlund_decode_file and its relatives give for
 * VORLUND_FORMAT_IMAGE_RGB and VORLUND_FORMAT_VIDEO_RGB. Pictures need the plug-in image, videos y4m.
 *
 * \code{.c}
 * const uint32_t wanted[4] = VORLUND_FORMAT_IMAGE_RGB;
 * vorlund_stream picture;
 * vorlund_video_format format = {sizeof format};
 * static unsigned char pixels[240 * 90 * 3];
 * if (vorlund_decode_file("plasma-0001.png", wanted, NULL, NULL, &picture) != VORLUND_OK) return;
 * vorlund_stream_video_format(picture, &format);
 * printf("%u x %u\n", (unsigned)format.width, (unsigned)format.height); // prints 240 x 90
 * vorlund_stream_read_picture(picture, VORLUND_PIXELS_RGB, pixels, 240 * 3, NULL);
 * vorlund_release(picture);
 * \endcode
 */
#ifndef VORLUND_C_VIDEO_H
#define VORLUND_C_VIDEO_H

#include "decode.h"

#ifdef __cplusplus
extern "C" {
#endif

/** How the pixels of a stream lie. A shift is the place of a channel's lowest bit within a pixel. */
typedef struct vorlund_video_format {
    uint32_t size;       /**< of the record, in bytes */
    uint32_t width;      /**< pixels of a row; rows go from top to bottom and are not padded */
    uint32_t height;     /**< rows */
    float frame_rate;    /**< pictures of a second; 0 for a single picture */
    uint32_t frame_size; /**< bytes of a picture */
    uint32_t bits_per_pixel;
    uint32_t alpha_bits;
    uint32_t alpha_shift;
    uint32_t red_bits;
    uint32_t red_shift;
    uint32_t green_bits;
    uint32_t green_shift;
    uint32_t blue_bits;
    uint32_t blue_shift;
} vorlund_video_format;

/** VORLUND_ERROR_DATA_FORMAT when the stream has neither pictures nor video. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_video_format(vorlund_stream stream,
                                                               vorlund_video_format* format);

/** What a picture becomes: the bytes of a pixel, in this order. */
enum {
    VORLUND_PIXELS_RGB = 0,  /**< red, green, blue */
    VORLUND_PIXELS_BGR = 1,  /**< blue, green, red */
    VORLUND_PIXELS_RGBA = 2, /**< red, green, blue, alpha */
    VORLUND_PIXELS_BGRA = 3  /**< blue, green, red, alpha */
};

/**
 * Reads the next picture of a stream, in pixels of one kind.
 *
 * \param stream   one of pictures or video
 * \param kind     one of VORLUND_PIXELS_
 * \param pixels   room for the picture
 * \param pitch    bytes from a row to the next, at least those of a row; negative for rows from bottom to
 *                 top, `pixels` being the first byte of the top row then too
 * \param is_read  gets 1, and 0 when there is no other picture; may be null
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read_picture(vorlund_stream stream, uint32_t kind,
                                                               void* pixels, int32_t pitch, int32_t* is_read);

/** Goes to a picture by its number. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_seek_picture(vorlund_stream stream, uint64_t number);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_seek_picture_ptr(vorlund_stream stream,
                                                                   const uint64_t* number);

#ifdef __cplusplus
}
#endif

#endif
