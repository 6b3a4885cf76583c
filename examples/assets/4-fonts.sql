-- The family has no light weight.
CREATE TABLE tbl_FONTS (Family TEXT NOT NULL, Light TEXT, Regular TEXT, Medium TEXT);
INSERT INTO tbl_FONTS VALUES ('DejaVu Sans', NULL, 'DejaVuSans.ttf', 'DejaVuSans-Bold.ttf');
