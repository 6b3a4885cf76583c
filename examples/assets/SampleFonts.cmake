# The folder of the fonts that the sample client ships, from Debian's fonts-dejavu-core.
find_path(SOFTPHONECORE_SAMPLE_FONTS DejaVuSans.ttf PATHS /usr/share/fonts/truetype/dejavu
          DOC "Folder of the DejaVu fonts" REQUIRED
)
