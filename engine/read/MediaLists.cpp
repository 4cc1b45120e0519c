#include "read/MediaLists.h"

namespace vxlsync
{

const char* allowedContainers()
{
    return
        // Of sound alone, uncompressed.
        "wav,w64,aiff,caf,au,avr,ircam,nistsphere,pvf,sox,voc,"
        // Compressed without loss, and one bit a sample.
        "flac,ape,shn,tak,tta,wv,truehd,mlp,dsf,iff,wsd,"
        // Compressed with loss. G.722 and GSM are known by their names alone, but recorders of
        // telephones write them.
        "mp3,aac,loas,ac3,eac3,dts,dtshd,spdif,s337m,ogg,mpc,mpc8,amr,amrnb,amrwb,qcp,oma,"
        "xwma,"
        "dss,act,g722,gsm,"
        // Of films.
        "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,asf,asf_o,flv,mpeg,mpegts,mxf,gxf,dv,"
        "lxf,"
        "nut,rm,wtv,dhav";
}

const char* allowedCodecs()
{
    return "pcm_alaw,pcm_bluray,pcm_dvd,pcm_f16le,pcm_f24le,pcm_f32be,pcm_f32le,pcm_f64be,pcm_"
           "f64le,"
           "pcm_lxf,pcm_mulaw,pcm_s16be,pcm_s16be_planar,pcm_s16le,pcm_s16le_planar,pcm_s24be,"
           "pcm_s24daud,pcm_s24le,pcm_s24le_planar,pcm_s32be,pcm_s32le,pcm_s32le_planar,pcm_s64be,"
           "pcm_s64le,pcm_s8,pcm_s8_planar,pcm_u16be,pcm_u16le,pcm_u24be,pcm_u24le,pcm_u32be,pcm_"
           "u32le,"
           "pcm_u8,dvaudio,s302m,dolby_e,"
           "alac,als,ape,flac,shorten,tak,tta,wavpack,truehd,mlp,wmalossless,ralf,"
           "dsd_lsbf,dsd_lsbf_planar,dsd_msbf,dsd_msbf_planar,dst,"
           "aac,aac_fixed,aac_latm,libfdk_aac,ac3,ac3_fixed,eac3,dca,mp1,mp1float,mp2,mp2float,mp3,"
           "mp3float,mp3adu,mp3adufloat,mp3on4,mp3on4float,mpc7,mpc8,opus,libopus,vorbis,libvorbis,"
           "wmav1,wmav2,wmapro,wmavoice,atrac1,atrac3,atrac3al,atrac3plus,atrac3plusal,cook,sipr,"
           "real_144,real_288,qdm2,qdmc,mace3,mace6,nellymoser,"
           "amrnb,amrwb,libopencore_amrnb,libopencore_amrwb,evrc,qcelp,speex,libspeex,gsm,gsm_ms,"
           "libgsm,"
           "libgsm_ms,ilbc,libilbc,g722,g723_1,g726,g726le,g729,dss_sp,truespeech,"
           "adpcm_ima_oki,adpcm_ima_qt,adpcm_ima_wav,adpcm_ms,adpcm_sbpro_2,adpcm_sbpro_3,adpcm_"
           "sbpro_"
           "4,"
           "adpcm_swf,adpcm_yamaha";
}

} // namespace vxlsync
